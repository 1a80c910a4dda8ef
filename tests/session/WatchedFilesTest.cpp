#include "ObservedSessionTest.h"

#include <functional>
#include <string>
#include <utility>

using namespace KvNReflasher;

namespace {

/// An element of the processor board in phase 0, two boards whose elements share a file in phase 1, and a file that is
/// written to the target in phase 2.
class WatchedFilesTest : public ObservedSessionTest {
protected:
    WatchedFilesTest() {
        addNodeElement(1, completeElement(1).polls(1));
        boards.push_back(completeBoard("IOMODULE", "IO", 1).element(completeElement(1).polls(1)));
        boards.push_back(completeBoard("IOMODULE", "IO", 2).element(completeElement(1).polls(1)));
        archive.add(entry("io.bin").board("IO", 1).sequence(2));
        writeImage("node1.bin");
        writeImage("io.bin");
        addFile("a.cfg", "cfg/a.cfg", 3);
    }

    /// Updates with watched files; `change` is made at the first event of this kind and value.
    void updateWithChange(KvEEvent kind, std::uint32_t value, std::function<void()> change) {
        kind_ = kind;
        value_ = value;
        change_ = std::move(change);
        ASSERT_EQ(0U, prepare(performUpdate));
        observed().watchFiles();
        observed().setEventFunction(
            [](const KvTEvent& event, void* context) {
                auto& test = *static_cast<WatchedFilesTest*>(context);
                if (event.event == test.kind_ && event.value == test.value_ && test.change_) {
                    std::exchange(test.change_, nullptr)();
                }
            },
            this);
        EXPECT_TRUE(run());
    }
    void writeOther(const char* name) const { archive.folder().write(name, "other"); }

    /// For each element: "-", or "changed" if its file has.
    [[nodiscard]] std::string changes() {
        std::string text;
        for (const KvTElementOutcome& element : outcome().elements) {
            text.append(text.empty() ? "" : " ").append(element.fileChanged ? "changed" : "-");
        }
        return text;
    }
    [[nodiscard]] KvTVerification verification() { return verifyUpdate(plan(), outcome(), observed().look(), false); }

private:
    KvEEvent kind_ = KvEEvent::phase;
    std::uint32_t value_ = 0;
    std::function<void()> change_;
};

} // namespace

TEST_F(WatchedFilesTest, FilesThatStayAreAsExpected) {
    updateWithChange(KvEEvent::locked, 0, [] {});
    EXPECT_EQ("- - - -", changes());
    EXPECT_TRUE(verdictOf(verification()).isSuccess());
}

TEST_F(WatchedFilesTest, AFileThatChangesBeforeItsTransferMakesEachElementThatItServesDiffer) {
    // Only its payload: the target reports what was planned.
    updateWithChange(KvEEvent::locked, 0, [this] {
        std::string image = archive.folder().read("io.bin");
        image.back() = static_cast<char>(image.back() ^ 1);
        archive.folder().write("io.bin", image);
    });
    EXPECT_EQ("- changed changed -", changes());
    const KvTVerification found = verification();
    EXPECT_EQ(1U, found.count(KvEVerified::asExpected));
    EXPECT_EQ(2U, found.count(KvEVerified::differs));
    EXPECT_TRUE(found.elements.at(1).fileChanged);
    EXPECT_EQ(KvEFailure::verification, verdictOf(found).failure);
    EXPECT_EQ("the target does not report what it should: 2 different; update files changed during the update",
              verdictOf(found).message);
}

TEST_F(WatchedFilesTest, AFileThatIsWrittenToTheTargetIsWatchedToo) {
    updateWithChange(KvEEvent::phase, 2, [this] { writeOther("a.cfg"); });
    EXPECT_EQ("- - - changed", changes());
    EXPECT_EQ(1U, verification().count(KvEVerified::differs));
}

TEST_F(WatchedFilesTest, AFileThatChangesAfterItsTransferMayDoSo) {
    updateWithChange(KvEEvent::phase, 1, [this] { writeOther("node1.bin"); });
    EXPECT_EQ("- - - -", changes());
}

TEST_F(WatchedFilesTest, AFileThatIsWrittenAgainWithTheSameContentHasNotChanged) {
    updateWithChange(KvEEvent::locked, 0, [this] {
        const std::string content = archive.folder().read("a.cfg");
        archive.removeFile("a.cfg");
        archive.folder().write("a.cfg", content);
    });
    EXPECT_EQ("- - - -", changes());
}

TEST_F(WatchedFilesTest, NothingIsNoticedUnlessFilesAreWatched) {
    EXPECT_EQ(0U, prepare(performUpdate));
    writeOther("a.cfg");
    EXPECT_TRUE(run());
    EXPECT_EQ("- - - -", changes());
}

TEST_F(WatchedFilesTest, ASecondPreparationWatchesNothing) {
    EXPECT_EQ(0U, prepare(performUpdate));
    observed().watchFiles();
    EXPECT_EQ(0U, prepare(performUpdate));
    writeOther("a.cfg");
    EXPECT_TRUE(run());
    EXPECT_EQ("- - - -", changes());
    closeAfterSecondPrepare(1);
}

TEST_F(WatchedFilesTest, WithoutAPlanThereIsNothingToWatch) {
    observed().watchFiles();
    EXPECT_EQ("", changes());
}
