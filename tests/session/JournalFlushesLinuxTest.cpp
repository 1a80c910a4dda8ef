#include "ObservedSessionTest.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

struct Flushes {
    int files = 0;
    int folders = 0;

    friend bool operator==(const Flushes&, const Flushes&) = default;
};

Flushes flushes;
/// Number of the flush that fails, counted from 1; 0: all succeed.
int failingFlush = 0;
/// Error of the next write into a journal; 0: it succeeds.
int writeError = 0;

bool isJournal(int file) {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), error).extension() == ".jsonl";
}

} // namespace

// In place of those of the C library. They fail as these do.

extern "C" int fsync(int file) {
    struct stat status {};
    ++(fstat(file, &status) == 0 && S_ISDIR(status.st_mode) ? flushes.folders : flushes.files);
    if (failingFlush != 0 && flushes.files == failingFlush) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    if (writeError != 0 && isJournal(file)) {
        errno = std::exchange(writeError, 0);
        return -1;
    }
    return syscall(SYS_write, file, bytes, size);
}

extern "C" int fdatasync(int file) {
    ++flushes.files;
    return static_cast<int>(syscall(SYS_fdatasync, file));
}

namespace {

/// An element of the processor board in phase 0, those of two boards in phase 1, and a file that is written to the
/// target in phase 2.
class JournalFlushesTest : public ObservedSessionTest {
protected:
    JournalFlushesTest() {
        addNodeElement(1, completeElement(1).polls(1));
        boards.push_back(completeBoard("IOMODULE", "IO", 1).element(completeElement(1).polls(1)));
        boards.push_back(completeBoard("IOMODULE", "IO", 2).element(completeElement(1).polls(1)));
        archive.add(entry("io.bin").board("IO", 1).sequence(2));
        writeImage("node1.bin");
        writeImage("io.bin");
        addFile("a.cfg", "cfg/a.cfg", 3);
        flushes = {};
    }
    ~JournalFlushesTest() override {
        failingFlush = 0;
        writeError = 0;
    }
    JournalFlushesTest(const JournalFlushesTest&) = delete;
    JournalFlushesTest& operator=(const JournalFlushesTest&) = delete;

    [[nodiscard]] KvTVerdict openJournal(bool isRequired = true) {
        KvTJournalOptions journal;
        journal.folder = (archive.folder().path() / "journal").wstring();
        journal.isRequired = isRequired;
        return observed().openJournal(journal);
    }
    /// Number of elements and files that were updated.
    [[nodiscard]] std::ptrdiff_t updated() {
        const std::vector<std::string> all = results();
        return std::count(all.begin(), all.end(), nameOf(KvEResult::updated));
    }
};

} // namespace

TEST_F(JournalFlushesTest, AnUpdateWaitsForTheDiskAtItsBeginBeforeEachPhaseAndAtItsEnd) {
    std::vector<int> atPhases;
    ASSERT_EQ(0U, prepare(performUpdate));
    ASSERT_TRUE(openJournal().isSuccess());
    EXPECT_EQ((Flushes{.files = 0, .folders = 1}), flushes); // the file is found again
    observed().setEventFunction(
        [](const KvTEvent& event, void* context) {
            if (event.event == KvEEvent::phase) {
                static_cast<std::vector<int>*>(context)->push_back(flushes.files);
            }
        },
        &atPhases);
    EXPECT_TRUE(run());
    EXPECT_EQ((std::vector{2, 3, 4, 4}), atPhases); // the last phase is the end of all
    EXPECT_TRUE(observed().closeJournal({}, 0).isSuccess());
    EXPECT_EQ((Flushes{.files = 5, .folders = 1}), flushes);
}

TEST_F(JournalFlushesTest, AnUpdateWithoutAJournalDoesNotWaitForTheDisk) {
    EXPECT_TRUE(perform(performUpdate));
    EXPECT_EQ(Flushes(), flushes);
}

namespace {

struct FailingFlush {
    int number;
    std::ptrdiff_t updated;
};

class FailingFlushTest : public JournalFlushesTest, public testing::WithParamInterface<FailingFlush> {};

} // namespace

TEST_P(FailingFlushTest, NoPhaseBeginsThatTheDiskDoesNotHave) {
    failingFlush = GetParam().number;
    ASSERT_EQ(0U, prepare(performUpdate));
    ASSERT_TRUE(openJournal().isSuccess());
    EXPECT_FALSE(run());
    EXPECT_EQ(GetParam().updated, updated());
    const KvTVerdict verdict = outcome().verdict;
    EXPECT_EQ(KvEFailure::output, verdict.failure);
    EXPECT_NE(std::string::npos, verdict.message.find("the journal cannot be written: ")) << verdict.message;
}

INSTANTIATE_TEST_SUITE_P(BeginAndPhases, FailingFlushTest,
                         testing::Values(FailingFlush{1, 0}, FailingFlush{2, 0}, FailingFlush{3, 1},
                                         FailingFlush{4, 3}));

TEST_F(JournalFlushesTest, AnUpdateGoesOnWithoutAJournalThatNobodyAskedFor) {
    failingFlush = 3;
    ASSERT_EQ(0U, prepare(performUpdate));
    ASSERT_TRUE(openJournal(false).isSuccess());
    EXPECT_TRUE(run());
    EXPECT_EQ(4, updated());
    EXPECT_EQ(KvEFailure::output, observed().closeJournal({}, 0).failure);
}

TEST_F(JournalFlushesTest, AWriteThatIsInterruptedIsTriedAgainAndAnotherFaultIsTheEnd) {
    writeError = EINTR;
    ASSERT_EQ(0U, prepare(performUpdate));
    ASSERT_TRUE(openJournal().isSuccess());
    observed().setEventFunction(
        [](const KvTEvent& event, void*) {
            if (event.event == KvEEvent::elementEnd) {
                writeError = ENOSPC;
            }
        },
        nullptr);
    EXPECT_FALSE(run());
    EXPECT_EQ(1, updated());
    EXPECT_EQ(KvEFailure::output, outcome().verdict.failure);
}

TEST_F(JournalFlushesTest, ATargetIsNotRebootedIfThatCannotBeWrittenDown) {
    failingFlush = 1;
    ASSERT_EQ(0U, prepare(connectOnly));
    ASSERT_TRUE(openJournal().isSuccess());
    EXPECT_FALSE(observed().reboot());
    EXPECT_EQ(KvEFailure::output, outcome().verdict.failure);
}

TEST_F(JournalFlushesTest, AJournalInAFolderThatCannotBeWrittenIsRefused) {
    KvTJournalOptions journal;
    journal.folder = L"/proc/self";
    ASSERT_EQ(0U, prepare(performUpdate));
    const KvTVerdict verdict = observed().openJournal(journal);
    EXPECT_EQ(KvEFailure::output, verdict.failure);
    EXPECT_EQ(0U, verdict.message.find("the journal in '/proc/self' cannot be written: ")) << verdict.message;
}
