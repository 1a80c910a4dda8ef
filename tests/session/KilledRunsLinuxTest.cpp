#include "EnvironmentVariable.h"
#include "KvRuns.h"
#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// Each update runs in a process of its own, which is killed behind some line of its journal. The next one has what is
// left then: the target's state, the journal, and no more.

namespace fs = std::filesystem;
using namespace KvNReflasher;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// Behind an event, counted from 0, that the journal has a line for. One more than there are: behind the run, before
/// its end is written.
struct KillPoint {
    std::size_t event = 0;
    /// The line has reached the file. Otherwise it may be lost with those before it, as without power.
    bool isWritten = false;
};

/// How a run goes on with an earlier one.
struct Earlier {
    std::string id;
    bool redoes = false;
};

/// The board whose element reports neither version nor checksum before its update, and where the target keeps that.
constexpr const char* doubtfulBoard = "IO1";
constexpr const char* doubtfulFile = "state/elements/IOMODULE.1-UPDATE_INFO.1-UPDATE_ELEMENT.1.json";
/// The board whose element shows its update after a reboot.
constexpr const char* waitingBoard = "IO2";

/// The lines of a text, with their ends.
std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        lines.push_back(text.substr(begin, end + 1 - begin));
    }
    return lines;
}

bool isIntent(const std::string& line) {
    return line.find(R"("event":"intent")") != std::string::npos;
}

/// Two elements in each of the phases 0 and 1; two files that the inventory does not list in phase 2.
class KilledRunsTest : public ObservedSessionTest {
protected:
    KilledRunsTest() {
        addNodeElement(1, completeElement(1).polls(2));
        addBoard(1, completeElement(1).parameter("VERSION", "0.0").parameter("CHECKSUM_CRC32", 0).polls(1));
        addBoard(2, completeElement(1).activatedAtReboot().polls(1), 2);
        addBoard(3, completeElement(1).polls(2), 2);
        addFile("a.cfg", "cfg/a.cfg", 3);
        addFile("b.cfg", "cfg/b.cfg", 3);
        for (const char* const image : {"node1.bin", "io1.bin", "io2.bin", "io3.bin"}) {
            writeImage(image);
        }
    }
    void SetUp() override {
        ObservedSessionTest::SetUp();
        serve();
        reset();
        update();
        eventCount_ = event_;
        complete_ = state();
        ASSERT_EQ(6U, complete_.size());
    }
    void close() override {
        ObservedSessionTest::close();
        EXPECT_TRUE(KvEmulation::ledger().isClean());
        KvEmulation::reset();
    }

    /// A target that was not updated yet, and a journal without runs.
    void reset() {
        close();
        fs::remove_all(target.folder().path() / "state");
        journal_.emplace();
    }
    /// The state of the target after an update that nobody has disturbed, and the events of that.
    [[nodiscard]] const std::map<std::string, std::string>& complete() const { return complete_; }
    [[nodiscard]] std::size_t eventCount() const { return eventCount_; }
    /// The files in which the target keeps what it is, with their content.
    [[nodiscard]] std::map<std::string, std::string> state() const;

    /// Updates, and goes on with a run if one is named.
    void update(const Earlier& earlier = {});
    /// The same in a process of its own, which is killed there. False if it has come to its end before.
    [[nodiscard]] bool updateAndKill(KillPoint point, const Earlier& earlier = {});

    [[nodiscard]] std::vector<KvTRun> runs() const {
        const KvTRunList list = listRuns(journal_->path().wstring());
        EXPECT_THAT(list.faults, IsEmpty());
        return list.runs;
    }
    [[nodiscard]] KvTRunRecord record(const std::string& id) const {
        std::string reason;
        const std::optional<KvTRunRecord> found = readRun(journal_->path().wstring(), id, reason);
        EXPECT_TRUE(found) << reason;
        return found.value_or(KvTRunRecord());
    }
    [[nodiscard]] const ScratchFolder& journal() const { return *journal_; }

    /// What an update that goes on with `run` finds different.
    std::vector<std::string> differencesTo(const KvTRunRecord& run) {
        EXPECT_EQ(0U, begin(performUpdate, {}));
        return observed().resume(run, false).differences;
    }

    /// Checks that the run broke off, and that the target has what it says is done.
    void expectBrokenOff(const std::string& id);
    /// Goes on with the run that broke off, and checks that this finishes it.
    void expectFinished(const std::string& id);
    /// Checks that a run with this plan leaves what `earlier` has done, and what it has left in doubt.
    void expectKnown(const KvTRunRecord& earlier, const KvTPlan& later);

    bool isForced = false;

private:
    std::uint32_t begin(std::uint32_t mode, const std::string& resumes);
    void noteEvent(const KvTEvent& event);
    void killIfDue() const;
    void pauseIfDue() const;
    void expectOnTarget(const KvTPlannedElement& element) const;

    std::optional<ScratchFolder> journal_;
    std::optional<KillPoint> killPoint_;
    std::size_t event_ = 0;
    std::size_t eventCount_ = 0;
    std::map<std::string, std::string> complete_;
};

std::map<std::string, std::string> KilledRunsTest::state() const {
    std::map<std::string, std::string> files;
    for (const std::string& name : target.folder().list()) {
        const bool isKept = name.starts_with("state/elements/") || name.starts_with("state/cfdrive/");
        if (isKept && fs::is_regular_file(target.folder().path() / name)) {
            files[name] = target.folder().read(name);
        }
    }
    return files;
}

std::uint32_t KilledRunsTest::begin(std::uint32_t mode, const std::string& resumes) {
    close();
    (void)target.serveAgain();
    options.mode = mode;
    options.forceUpdate = isForced;
    if (mode == performUpdate) {
        KvTJournalOptions kept;
        kept.folder = journal_->path().wstring();
        kept.isRequired = true;
        kept.resumes = resumes;
        EXPECT_TRUE(observed().openJournal(kept).isSuccess());
    }
    return session().prepare();
}

void KilledRunsTest::update(const Earlier& earlier) {
    EXPECT_EQ(0U, begin(performUpdate, earlier.id));
    if (!earlier.id.empty()) {
        EXPECT_THAT(observed().resume(record(earlier.id), earlier.redoes).differences, IsEmpty());
    }
    for (const KvTPlannedElement& element : plan().elements) {
        if (element.decision.has(KvEReason::doneBefore)) {
            expectOnTarget(element);
        }
    }
    event_ = 0;
    observed().setEventFunction(
        [](const KvTEvent& event, void* context) { static_cast<KilledRunsTest*>(context)->noteEvent(event); }, this);
    EXPECT_TRUE(run());
    killIfDue();
    EXPECT_TRUE(observed().closeJournal(outcome().verdict, 0).isSuccess());
    close();
}

bool KilledRunsTest::updateAndKill(KillPoint point, const Earlier& earlier) {
    close();
    (void)std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        killPoint_ = point;
        update(earlier);
        (void)std::fflush(stdout);
        _exit(HasFailure() ? 1 : 0); // without what the parent is to clean up
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status) || status == 0) << "the child says why: " << status;
    return WIFSIGNALED(status);
}

void KilledRunsTest::noteEvent(const KvTEvent& event) {
    if (event.event == KvEEvent::progress || event.event == KvEEvent::stalled) {
        return;
    }
    killIfDue();
    ++event_;
    pauseIfDue();
}

/// A child with a failure lives on and ends with it.
void KilledRunsTest::killIfDue() const {
    if (killPoint_ && killPoint_->event == event_ && !HasFailure()) {
        (void)std::raise(SIGKILL);
    }
}

/// Lines that come within a tenth of a second are written together, with the first one afterwards.
void KilledRunsTest::pauseIfDue() const {
    if (killPoint_ && killPoint_->event == event_ && killPoint_->isWritten) {
        std::this_thread::sleep_for(std::chrono::milliseconds(101));
    }
}

void KilledRunsTest::expectOnTarget(const KvTPlannedElement& element) const {
    if (!element.isListed()) {
        EXPECT_EQ(archive.folder().read(element.entry->fileName),
                  target.folder().read("state/cfdrive/" + element.targetPath));
    } else if (element.boardName != waitingBoard) {
        EXPECT_EQ(element.entry->version, element.installed.version) << element.displayName;
        EXPECT_EQ(element.entry->checksumCrc32, element.installed.checksumCrc32) << element.displayName;
    }
}

void KilledRunsTest::expectBrokenOff(const std::string& id) {
    const KvTRunRecord run = record(id);
    EXPECT_EQ(KvERunState::brokenOff, run.run.state);
    EXPECT_EQ("", run.run.fault);
    EXPECT_TRUE(run.run.isOpen());
    EXPECT_EQ(0U, begin(showUpdatePlan, {}));
    for (std::size_t index = 0; index < run.progress.size(); ++index) {
        if (run.progress[index] == KvEElementProgress::done) {
            expectOnTarget(plan().elements.at(index));
        }
    }
}

void KilledRunsTest::expectFinished(const std::string& id) {
    update({id, true});
    EXPECT_EQ(complete(), state());
    const std::vector<KvTRun> all = runs();
    EXPECT_EQ(id, all.back().resumes);
    EXPECT_EQ(KvERunState::complete, all.back().state);
    EXPECT_TRUE(all.back().verdict.isSuccess()) << all.back().verdict.message;
    EXPECT_TRUE(std::none_of(all.begin(), all.end(), [](const KvTRun& run) { return run.isOpen(); }));
}

void KilledRunsTest::expectKnown(const KvTRunRecord& earlier, const KvTPlan& later) {
    for (const KvTPlannedElement& element : later.elements) {
        const KvEElementProgress progress = earlier.progress.at(element.index);
        if (progress == KvEElementProgress::done && element.boardName != waitingBoard) {
            EXPECT_TRUE(element.decision.has(KvEReason::doneBefore)) << element.displayName;
        }
        if (progress == KvEElementProgress::inProgress && element.boardName == doubtfulBoard) {
            EXPECT_EQ(!element.installed.version, element.decision.has(KvEReason::inDoubt));
        }
    }
}

TEST_F(KilledRunsTest, BehindEachLineTheRunBrokeOffAndTheNextFinishesIt) {
    for (const bool isWritten : {false, true}) {
        for (std::size_t event = 0; event <= eventCount(); ++event) {
            SCOPED_TRACE(testing::Message() << "event " << event << (isWritten ? ", written" : ""));
            reset();
            ASSERT_TRUE(updateAndKill({event, isWritten}));
            ASSERT_EQ(1U, runs().size());
            const std::string id = runs().front().id;
            expectBrokenOff(id);
            expectFinished(id);
        }
    }
}

TEST_F(KilledRunsTest, CutBehindAnyLineByALossOfPowerItGoesOnToo) {
    reset();
    update();
    const std::string id = runs().front().id;
    const std::vector<std::string> lines = linesOf(journal().read(id + ".jsonl"));
    std::string kept;
    std::size_t event = 0;
    for (std::size_t number = 0; number + 1 < lines.size(); ++number) {
        SCOPED_TRACE(testing::Message() << "line " << number);
        reset();
        ASSERT_TRUE(updateAndKill({event, false}));
        fs::remove_all(journal().path());
        journal().write(id + ".jsonl", kept.append(lines[number]));
        expectBrokenOff(id);
        expectFinished(id);
        event += number >= 2 && !isIntent(lines[number]) ? 1 : 0;
    }
    EXPECT_EQ(eventCount(), event);
}

TEST_F(KilledRunsTest, ARunWhoseEndIsWrittenIsComplete) {
    reset();
    update();
    ASSERT_EQ(1U, runs().size());
    EXPECT_EQ(KvERunState::complete, runs().front().state);
    EXPECT_FALSE(runs().front().isOpen());
}

TEST_F(KilledRunsTest, ForcedUpdatesThatAreDoneAreNotRepeatedAndTheOthersAre) {
    isForced = true;
    for (std::size_t event = 0; event <= eventCount(); ++event) {
        SCOPED_TRACE(testing::Message() << "event " << event);
        reset();
        update();
        ASSERT_TRUE(updateAndKill({event, false}));
        const std::string id = runs().back().id;
        expectBrokenOff(id);
        expectFinished(id);
        const KvTRunRecord before = record(id);
        for (const KvTPlannedElement& element : record(runs().back().id).plan.plan.elements) {
            const bool wasDone = before.progress.at(element.index) == KvEElementProgress::done;
            EXPECT_EQ(wasDone && element.boardName != waitingBoard, !element.decision.update) << element.displayName;
        }
    }
}

TEST_F(KilledRunsTest, WhatIsInDoubtIsUpdatedOnRequestOnly) {
    std::size_t doubtful = 0;
    for (std::size_t event = 0; event <= eventCount(); ++event) {
        SCOPED_TRACE(testing::Message() << "event " << event);
        reset();
        ASSERT_TRUE(updateAndKill({event, false}));
        const std::string id = runs().back().id;
        const auto before = state();
        update({id, false});
        if (state() != complete()) {
            ++doubtful;
            EXPECT_FALSE(before.contains(doubtfulFile));
            EXPECT_FALSE(state().contains(doubtfulFile));
        }
        update({id, true});
        EXPECT_EQ(complete(), state());
    }
    EXPECT_NE(0U, doubtful);
}

TEST_F(KilledRunsTest, ARunThatGoesOnAndIsKilledTooKnowsWhatTheEarlierOneKnew) {
    const std::size_t stride = std::max(numberFromEnvironment("KV_SWEEP_STRIDE", 4), 1U);
    isForced = true;
    for (std::size_t first = 0; first <= eventCount(); ++first) {
        for (std::size_t second = first % stride; second <= eventCount(); second += stride) {
            SCOPED_TRACE(testing::Message() << "events " << first << ", " << second);
            reset();
            ASSERT_TRUE(updateAndKill({first, false}));
            const std::string id = runs().back().id;
            if (!updateAndKill({second, false}, {id, false})) {
                break; // it has not so many events
            }
            expectBrokenOff(runs().back().id);
            update({runs().back().id, false});
            expectKnown(record(id), record(runs().back().id).plan.plan);
            expectFinished(runs().back().id);
        }
    }
}

TEST_F(KilledRunsTest, ARunThatGoesOnAndIsKilledBeforeItsPlanIsWrittenKnowsThatToo) {
    isForced = true;
    for (std::size_t event = 0; event <= eventCount(); ++event) {
        SCOPED_TRACE(testing::Message() << "event " << event);
        reset();
        ASSERT_TRUE(updateAndKill({event, false}));
        const std::string id = runs().back().id;
        ASSERT_TRUE(updateAndKill({0, false}, {id, false}));
        const std::string file = runs().back().id + ".jsonl";
        journal().write(file, linesOf(journal().read(file)).front());
        expectBrokenOff(runs().back().id);
        update({runs().back().id, false});
        expectKnown(record(id), record(runs().back().id).plan.plan);
        expectFinished(runs().back().id);
    }
}

TEST_F(KilledRunsTest, WithoutTheRunThatKnowsTheElementsItDoesNotGoOn) {
    reset();
    ASSERT_TRUE(updateAndKill({0, false}));
    const std::string earlier = runs().back().id;
    ASSERT_TRUE(updateAndKill({0, false}, {earlier, false}));
    KvTRunRecord run = record(runs().back().id);
    run.plan.plan.elements.clear();
    fs::remove(journal().path() / (earlier + ".jsonl"));
    EXPECT_THAT(differencesTo(run),
                ElementsAre("the run " + run.run.id + " was to go on with one that cannot be read"));
    EXPECT_EQ(KvEFailure::stale, outcome().verdict.failure);
    run.run.resumes = run.run.id;
    EXPECT_THAT(differencesTo(run), SizeIs(1));
}

} // namespace
