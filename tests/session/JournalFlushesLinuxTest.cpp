#include "ObservedSessionTest.h"

#include <filesystem>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

using namespace KvNReflasher;

namespace {

struct Flushes {
    int files = 0;
    int folders = 0;

    friend bool operator==(const Flushes&, const Flushes&) = default;
};

Flushes flushes;

} // namespace

// In place of those of the C library. They fail as these do.

extern "C" int fsync(int file) {
    struct stat status {};
    ++(fstat(file, &status) == 0 && S_ISDIR(status.st_mode) ? flushes.folders : flushes.files);
    return static_cast<int>(syscall(SYS_fsync, file));
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

    [[nodiscard]] KvTVerdict openJournal() {
        KvTJournalOptions journal;
        journal.folder = (archive.folder().path() / "journal").wstring();
        journal.isRequired = true;
        return observed().openJournal(journal);
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
