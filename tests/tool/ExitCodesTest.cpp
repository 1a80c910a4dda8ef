#include "ExitCodes.h"

#include "KvDocuments.h"

#include "RedirectedStream.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace {

using KvNReflasher::KvEFailure;
using KvNReflasher::KvTVerdict;

TEST(ExitCodes, EachFailureHasItsCode) {
    using enum KvEFailure;
    const std::array<std::pair<KvEFailure, int>, 13> codes{{{none, 0},
                                                            {elements, 1},
                                                            {errors, 1},
                                                            {reboot, 1},
                                                            {output, 1},
                                                            {unsupported, 2},
                                                            {archive, 3},
                                                            {target, 4},
                                                            {locked, 5},
                                                            {verification, 6},
                                                            {stopped, 7},
                                                            {selection, 8},
                                                            {stale, 9}}};
    for (const auto& [failure, code] : codes) {
        EXPECT_EQ(exitCodeOf(failure), code);
    }
    EXPECT_EQ(exitCodeOf(static_cast<KvEFailure>(200)), 1) << "of a later library";
    EXPECT_EQ(exitUsage, 64);
    EXPECT_EQ(exitInterrupted, 130);
}

struct Concluded {
    int exitCode = -1;
    std::string errors;
};

Concluded concluded(const KvTVerdict& verdict) {
    const RedirectedStream errors(stderr);
    const ExitCode code = conclude(verdict);
    return {code, errors.received()};
}

TEST(Conclusion, TheReasonOfAFailureIsTheLastLine) {
    const Concluded failed = concluded({KvEFailure::locked, "the lock is taken"});
    EXPECT_EQ(failed.exitCode, 5);
    EXPECT_EQ(failed.errors, "kvreflash: the lock is taken\n");
}

TEST(Conclusion, ASuccessSaysNothing) {
    const Concluded succeeded = concluded({});
    EXPECT_EQ(succeeded.exitCode, 0);
    EXPECT_EQ(succeeded.errors, "");
}

TEST(Conclusion, ASessionWithoutMemoryCannotSayMore) {
    const Concluded failed = concluded({KvEFailure::errors, ""});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_EQ(failed.errors, "kvreflash: out of memory\n");
}

} // namespace
