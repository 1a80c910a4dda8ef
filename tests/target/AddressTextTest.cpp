// How target access uses the platform's address texts, with answers that the real ones do not give: this file is them.
#include "HostServiceStandIn.h"
#include "KeptMessages.h"
#include "KvCTargetAccess.h"
#include "KvNRtosAbstraction.h"
#include "NetworkStandIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

using testing::ElementsAre;

namespace {

/// Every address is 10.0.0.7.
constexpr std::uint32_t someAddress = 7;

struct AddressTexts {
    /// The number, from 1, of the parsing that adds an error; 0: none.
    std::size_t failingParse = 0;
    std::vector<std::string> parsed;
    /// The lengths that were told of the buffers, and whether these were zero throughout.
    std::vector<std::size_t> lengths;
    bool buffersWereZero = true;
};

AddressTexts& texts() {
    static AddressTexts given;
    return given;
}

} // namespace

std::uint32_t KvNRtosAbstraction::stringToIpV4(KvCErrorListPool& errors, const char* text) {
    texts().parsed.emplace_back(text);
    if (texts().parsed.size() == texts().failingParse) {
        errors.addError({});
    }
    return someAddress;
}

void KvNRtosAbstraction::ipToString(std::uint32_t /*address*/, char* buffer, std::size_t length) {
    texts().lengths.push_back(length);
    texts().buffersWereZero =
        texts().buffersWereZero && std::all_of(buffer, buffer + length + 1, [](char value) { return value == '\0'; });
    const std::string_view text = "10.0.0.7";
    *std::copy(text.begin(), text.end(), buffer) = '\0';
}

class AddressTextTest : public testing::Test {
protected:
    void SetUp() override {
        HostServiceStandIn::instance().forget();
        NetworkStandIn::instance() = {};
        errors().reset();
        texts() = {};
    }

    static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    bool resolve(const wchar_t* target) {
        options_.target = target;
        return access_.resolveTarget();
    }
    [[nodiscard]] const KvCTargetAccess& access() const { return access_; }

private:
    KeptMessages messages_;
    KvNReflasher::KvTOptions options_{};
    KvCTargetAccess access_{messages_.writer(), options_, errors()};
};

TEST_F(AddressTextTest, ATextIsWrittenIntoAZeroedBufferOf256Characters) {
    EXPECT_TRUE(resolve(L"010.0.0.7"));
    NetworkStandIn::instance().address = someAddress;
    EXPECT_TRUE(resolve(L"rack"));
    EXPECT_THAT(texts().lengths, ElementsAre(255U, 255U));
    EXPECT_TRUE(texts().buffersWereZero);
}

TEST_F(AddressTextTest, AnAddressThatIsParsedWithAnErrorIsNone) {
    texts().failingParse = 1;
    EXPECT_FALSE(resolve(L"010.0.0.7"));
    EXPECT_STREQ(access().ipAddress().c_str(), "");
    EXPECT_EQ(errors().getErrorCount(), 1U);
}

TEST_F(AddressTextTest, ALookupWhoseAddressIsParsedWithAnErrorEndsBeforeItIsSet) {
    texts().failingParse = 2;
    ASSERT_TRUE(resolve(L"010.0.0.7"));
    char somewhere = 0;
    auto* device = reinterpret_cast<KvHIMDeviceHandle>(&somewhere);
    EXPECT_EQ(access().findDevice(errors(), device), -1);
    EXPECT_EQ(device, nullptr);
    EXPECT_THAT(texts().parsed, ElementsAre("010.0.0.7", "10.0.0.7"));
    EXPECT_THAT(HostServiceStandIn::instance().calls(),
                ElementsAre("createFilter(1)", "setFilterParameter(filter1, 8, 1)", "setFilterParameter(filter1, 9, 0)",
                            "deleteFilter(filter1)"));
    EXPECT_EQ(errors().getErrorCount(), 1U);
}
