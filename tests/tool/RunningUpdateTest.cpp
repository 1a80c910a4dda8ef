#include "RunningUpdate.h"
#include "PlainProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using KvNReflasher::KvTArchiveFileInfo;
using KvNReflasher::KvTMessageCallback;
using KvNReflasher::KvTNumberCallback;
using KvNReflasher::KvTUpdateElementInfo;
using namespace std::chrono_literals;
using testing::EndsWith;
using testing::HasSubstr;

/// A session with three elements in two phases, and two that take no part.
class PreparedSession : public KvIReflasher {
public:
    void setPhaseCallback(KvTNumberCallback /*callback*/) override {}
    void setElementErrorCallback(KvTNumberCallback /*callback*/) override {}
    void setProgressCallback(KvTNumberCallback /*callback*/) override {}
    void setMessageCallback(KvTMessageCallback /*callback*/) override {}
    std::uint32_t prepare() override { return 0; }
    bool run() override { return true; }
    void getArchiveInfo(std::wstring& /*archiveName*/, std::wstring& /*archiveVersion*/, std::wstring& /*productName*/,
                        std::wstring& /*formatVersion*/, std::wstring& /*archiveVariant*/) override {}
    std::uint32_t reservedQuery() override { return 0; }
    void getUpdateElements(KvTUpdateElementInfo*& elements, std::uint32_t& count) override {
        count = 5;
        elements = new KvTUpdateElementInfo[count];
        for (std::uint32_t index = 0; index < count; ++index) {
            elements[index].displayName = L"Element " + std::to_wstring(index);
            elements[index].phase = index / 2;
            elements[index].hasArchiveFile = index != 3 ? 1 : 0;
            elements[index].disabled = index == 4;
        }
    }
    void disableUpdateElement(std::uint32_t /*index*/) override {}
    void getArchiveFiles(KvTArchiveFileInfo*& files, std::uint32_t& count) override {
        files = nullptr;
        count = 0;
    }
    bool getRebootSupportStatus(std::uint32_t& /*status*/) override { return false; }
    bool reboot() override { return false; }
};

class RunningUpdateTest : public testing::Test {
protected:
    /// What the second of two interrupts says.
    std::string lastWords() {
        (void)update.interrupt(begin);
        const RunningUpdate::Answer answer = update.interrupt(begin + 1s);
        EXPECT_TRUE(answer.endsTool);
        return answer.text;
    }

    PreparedSession session;
    RunningUpdate update{session};
    const std::chrono::steady_clock::time_point begin{100s};
};

TEST_F(RunningUpdateTest, TheFirstInterruptWarnsAndGoesOn) {
    const RunningUpdate::Answer answer = update.interrupt(begin);
    EXPECT_FALSE(answer.endsTool);
    EXPECT_EQ("\nkvreflash: the target is being updated; interrupting may leave it incomplete. The update goes on. "
              "Interrupt again within 3 s to end at once.\n",
              answer.text);
}

TEST_F(RunningUpdateTest, ASecondInterruptWithinThreeSecondsEndsTheTool) {
    (void)update.interrupt(begin);
    EXPECT_TRUE(update.interrupt(begin + 3s).endsTool);
}

TEST_F(RunningUpdateTest, ALaterInterruptIsAFirstOneAgain) {
    (void)update.interrupt(begin);
    EXPECT_FALSE(update.interrupt(begin + 3001ms).endsTool);
    EXPECT_TRUE(update.interrupt(begin + 5s).endsTool);
}

TEST_F(RunningUpdateTest, ItTellsWhichElementsOfThePhaseDidNotFail) {
    update.beginPhase(0);
    update.elementFailed(1);
    EXPECT_THAT(lastWords(),
                EndsWith("the target may be incomplete. Elements of phase 0 that were not reported failed:\n"
                         "  0  Element 0\n"));
    EXPECT_EQ(std::set<std::uint32_t>{1}, update.failedElements());
}

TEST_F(RunningUpdateTest, ElementsThatTakeNoPartAreNotTold) {
    update.beginPhase(1);
    EXPECT_THAT(lastWords(), EndsWith("not reported failed:\n  2  Element 2\n"));
}

TEST_F(RunningUpdateTest, BeforeTheFirstPhaseAndBehindTheLastOneNoElementIsTold) {
    EXPECT_THAT(lastWords(), EndsWith("No phase had begun.\n"));
    update.beginPhase(0xFFFFFFFF);
    EXPECT_THAT(update.interrupt(begin + 2s).text, EndsWith("All phases had ended.\n"));
}

TEST(CurrentUpdate, IsTheOneThatLives) {
    EXPECT_EQ(nullptr, RunningUpdate::current());
    PreparedSession session;
    {
        const RunningUpdate update(session);
        EXPECT_EQ(&update, RunningUpdate::current());
    }
    EXPECT_EQ(nullptr, RunningUpdate::current());
}

TEST(PlainProgress, TellsEachTenthOfAPhaseOnce) {
    PlainProgress progress;
    progress.beginPhase(4);
    EXPECT_EQ("", progress.lineFor(0));
    EXPECT_EQ("", progress.lineFor(9));
    EXPECT_EQ("Phase 4: 10%\n", progress.lineFor(10));
    EXPECT_EQ("", progress.lineFor(19));
    EXPECT_EQ("Phase 4: 50%\n", progress.lineFor(57));
    EXPECT_EQ("", progress.lineFor(30));
    EXPECT_EQ("Phase 4: 100%\n", progress.lineFor(100));
    EXPECT_EQ("", progress.lineFor(100));
    progress.beginPhase(5);
    EXPECT_EQ("Phase 5: 10%\n", progress.lineFor(11));
}

} // namespace
