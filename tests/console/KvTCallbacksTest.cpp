#include "KvTCallbacks.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Values = std::vector<std::uint32_t>;

Values& phases() {
    static Values values;
    return values;
}

Values& elementErrors() {
    static Values values;
    return values;
}

Values& percentages() {
    static Values values;
    return values;
}

} // namespace

TEST(Callbacks, EachNotificationGoesToItsOwnFunction) {
    KvTCallbacks callbacks;
    callbacks.phase = [](std::uint32_t value) { phases().push_back(value); };
    callbacks.elementError = [](std::uint32_t value) { elementErrors().push_back(value); };
    callbacks.progress = [](std::uint32_t value) { percentages().push_back(value); };
    callbacks.notifyPhase(0xFFFFFFFF);
    callbacks.notifyElementError(3);
    callbacks.notifyProgress(100);
    EXPECT_EQ(phases(), Values{0xFFFFFFFF});
    EXPECT_EQ(elementErrors(), Values{3});
    EXPECT_EQ(percentages(), Values{100});
}

TEST(Callbacks, WithoutAFunctionNothingHappens) {
    const KvTCallbacks callbacks;
    callbacks.notifyPhase(1);
    callbacks.notifyElementError(2);
    callbacks.notifyProgress(3);
    EXPECT_EQ(callbacks.message, nullptr);
}
