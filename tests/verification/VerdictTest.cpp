#include "KvISession.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

using namespace KvNReflasher;

namespace {

KvTVerification verificationOf(const std::vector<KvEVerified>& results) {
    KvTVerification verification;
    verification.look.succeeded = true;
    for (const KvEVerified result : results) {
        KvTVerifiedElement& element = verification.elements.emplace_back();
        element.index = static_cast<std::uint32_t>(verification.elements.size() - 1);
        element.result = result;
    }
    return verification;
}

/// The results whose bits are set.
std::vector<KvEVerified> resultsOf(unsigned bits) {
    std::vector<KvEVerified> results;
    for (unsigned result = 0; result < verifiedCount; ++result) {
        if ((bits >> result & 1U) != 0) {
            results.push_back(static_cast<KvEVerified>(result));
        }
    }
    return results;
}

/// The verdict a second time.
KvEFailure expectedFailure(const KvTVerification& verification) {
    const auto has = [&](KvEVerified result) { return verification.count(result) != 0; };
    if (!verification.look.succeeded || has(KvEVerified::differs) || has(KvEVerified::unchanged) ||
        has(KvEVerified::gone) || (has(KvEVerified::notJudged) && !has(KvEVerified::asExpected))) {
        return KvEFailure::verification;
    }
    return verification.look.errors.empty() ? KvEFailure::none : KvEFailure::errors;
}

struct MessageRow {
    const char* name;
    std::vector<KvEVerified> results;
    std::size_t errorCount;
    const char* message;

    friend void PrintTo(const MessageRow& row, std::ostream* stream) { *stream << row.name; }
};

class VerdictMessage : public testing::TestWithParam<MessageRow> {};

} // namespace

TEST(Verdict, EveryCombinationOfResultsHasItsFailure) {
    unsigned failures = 0;
    constexpr unsigned sets = 1U << verifiedCount;
    for (unsigned bits = 0; bits < sets * 4; ++bits) {
        KvTVerification verification = verificationOf(resultsOf(bits % sets));
        verification.look.succeeded = (bits / sets & 1U) == 0;
        verification.look.errors.resize((bits / sets & 2U) == 0 ? 0 : 1);
        const KvTVerdict verdict = verdictOf(verification);
        EXPECT_EQ(expectedFailure(verification), verdict.failure) << bits;
        EXPECT_EQ(verdict.isSuccess(), verdict.message.empty()) << bits;
        failures += verdict.isSuccess() ? 0 : 1;
    }
    EXPECT_LT(0U, failures);
    EXPECT_GT(sets * 4, failures);
}

TEST_P(VerdictMessage, SaysWhatIsWrong) {
    KvTVerification verification = verificationOf(GetParam().results);
    verification.look.errors.resize(GetParam().errorCount);
    EXPECT_EQ(GetParam().message, verdictOf(verification).message);
}

INSTANTIATE_TEST_SUITE_P(
    Messages, VerdictMessage,
    testing::Values(MessageRow{"Nothing", {}, 0, ""},
                    MessageRow{"FilesOnly", {KvEVerified::notListed, KvEVerified::notListed}, 0, ""},
                    MessageRow{"AllFaults",
                               {KvEVerified::gone, KvEVerified::differs, KvEVerified::unchanged, KvEVerified::differs,
                                KvEVerified::asExpected},
                               3,
                               "the target does not report what it should: 2 different, 1 unchanged, 1 gone"},
                    MessageRow{"NoneJudged",
                               {KvEVerified::notJudged, KvEVerified::notListed, KvEVerified::notJudged},
                               3,
                               "nothing that the target reports can be compared with the archive: 2 not judged"},
                    MessageRow{"Errors", {KvEVerified::asExpected}, 3, "the look at the target met 3 errors"}),
    [](const auto& row) { return row.param.name; });

TEST(Verdict, AFailedLookSaysWhy) {
    KvTVerification verification = verificationOf({});
    verification.look.succeeded = false;
    verification.look.message = "it is away";
    EXPECT_EQ("the target could not be looked at: it is away", verdictOf(verification).message);
}

TEST(Verdict, AnUnsupportedTargetNamesTheElementsThatDecideThat) {
    KvTPlan plan;
    EXPECT_TRUE(verdictOf(plan).isSuccess());
    plan.elements.resize(3);
    plan.elements[0].displayName = "One";
    plan.elements[2].displayName = "Three";
    plan.unsupportedElements = {0, 2};
    plan.supported = false;
    EXPECT_EQ(KvEFailure::unsupported, verdictOf(plan).failure);
    EXPECT_EQ("the archive does not support the target: it has no entry for 'One', 'Three'", verdictOf(plan).message);
}

TEST(Verdict, TheFailureThatComesFirstCountsAndOfEqualOnesTheEarlier) {
    KvTVerdict verdict;
    verdict.add({KvEFailure::verification, "a"});
    verdict.add({KvEFailure::output, "b"});
    EXPECT_EQ("a", verdict.message);
    verdict.add({KvEFailure::verification, "c"});
    EXPECT_EQ("a", verdict.message);
    verdict.add({KvEFailure::archive, "d"});
    EXPECT_EQ("d", verdict.message);
    verdict.add({});
    EXPECT_EQ(KvEFailure::archive, verdict.failure);
}

TEST(Verdict, OnlyWhatMayPassByItselfIsWorthAnotherTry) {
    for (unsigned number = 0; number <= static_cast<unsigned>(KvEFailure::none); ++number) {
        const auto failure = static_cast<KvEFailure>(number);
        const bool passes =
            failure == KvEFailure::target || failure == KvEFailure::locked || failure == KvEFailure::stopped;
        EXPECT_EQ(passes, (KvTVerdict{failure, ""}.isRetryable())) << number;
    }
}
