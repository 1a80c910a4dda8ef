#include "UpdateTest.h"

#include "KvEmulation.h"
#include "MessageBytes.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <ostream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Kind = SessionLog::Kind;

namespace {

constexpr std::uint32_t startPause = 500000;
constexpr std::uint32_t pollPause = 200000;
constexpr std::size_t spinnerColumn = 5;
const std::string spinner = "-\\|/";
/// The line that stands at the end of a phase, up to its verdict.
const std::string completeLine = "100% " + std::string(51, ' ');

bool isProgressLine(const std::wstring& message) {
    return !message.empty() && message.back() == L'\r';
}

/// A progress line with a "*" for the spinner; the percentage is three columns wide.
std::string progressLine(const std::string& percentage) {
    return percentage + "% *" + std::string(50, ' ') + "\r";
}

/// The line of an update, up to its verdict.
std::string updateLine(const std::string& displayName) {
    return "        " + displayName + std::string(56 - 8 - displayName.size(), ' ');
}

class PhaseExecutionTest : public UpdateTest {
protected:
    /// The percentages that were told.
    std::vector<std::string> progress() { return log.notificationsOf("progress"); }
    /// What was printed from "Updating:" on, up to the results, with a "*" for each spinner.
    std::string printedUpdating() {
        std::string text;
        for (const std::wstring& message : log.messages()) {
            const std::size_t begin = text.size();
            text.append(message.begin(), message.end());
            if (isProgressLine(message)) {
                text[begin + spinnerColumn] = '*';
            }
        }
        const std::size_t begin = text.find("\nUpdating:\n");
        return begin == std::string::npos ? "" : text.substr(begin, text.find("\nResults:\n") - begin);
    }
    /// The spinner characters of all progress lines so far.
    std::string spinners() {
        std::string characters;
        for (const std::wstring& message : log.messages()) {
            if (isProgressLine(message)) {
                characters += static_cast<char>(message[spinnerColumn]);
            }
        }
        return characters;
    }
    /// The progress line at 100 % with the spinner of line number `line`, from 0.
    std::string spinnerLine(std::size_t line) {
        std::string text = progressLine("100");
        text[spinnerColumn] = spinners().at(line);
        return text;
    }
    /// An element of the target's file system that a target claims.
    void addClaimedFile(const std::string& location) {
        node.element(completeFile(1, location));
        addFile("a.cfg", location);
    }
};

/// The spinner's characters from `first` on.
std::string spinnerFrom(char first, std::size_t count) {
    const std::size_t place = spinner.find(first);
    std::string characters;
    for (std::size_t index = 0; index < count; ++index) {
        characters += spinner[(place + index) % spinner.size()];
    }
    return characters;
}

} // namespace

// The lines of the updates.

struct NameCase {
    const char* name;
    std::string elementName;
    /// Blanks between name and verdict.
    std::size_t blanks;

    friend void PrintTo(const NameCase& row, std::ostream* stream) { *stream << row.name; }
};

class UpdateLineTest : public PhaseExecutionTest, public testing::WithParamInterface<NameCase> {};

TEST_P(UpdateLineTest, IsFilledUpToColumn56) {
    addNodeElement(1, completeElement(1, GetParam().elementName));
    addFault(fault("update2"));
    EXPECT_FALSE(update());
    std::wstring line;
    for (const std::wstring& message : log.messages()) {
        line += message;
    }
    const std::size_t begin = line.find(L"\nUpdating:\n") + 11;
    const std::wstring head(L"        NODE, ");
    const std::wstring name = inMessage(GetParam().elementName);
    ASSERT_EQ(line.substr(begin, head.size()), head);
    EXPECT_EQ(line.substr(begin + head.size(), name.size() + GetParam().blanks + 8),
              name + std::wstring(GetParam().blanks, L' ') + L"[ERROR]\n");
}

INSTANTIATE_TEST_SUITE_P(Names, UpdateLineTest,
                         testing::Values(NameCase{"Short", "One", 39},
                                         NameCase{"OneColumnLeft", std::string(41, 'a'), 1},
                                         NameCase{"NoColumnLeft", std::string(42, 'a'), 0},
                                         NameCase{"TooLong", std::string(60, 'a'), 0},
                                         // Two characters of two bytes each.
                                         NameCase{"CountedInBytes", "\xC3\xBC\xC3\xBC", 38}),
                         [](const auto& row) { return row.param.name; });

TEST_F(PhaseExecutionTest, TheHeadingComesBeforeTheFirstUpdateOnly) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    prepare();
    options.noProgress = true;
    EXPECT_TRUE(run());
    EXPECT_EQ(printedUpdating(),
              "\nUpdating:\n" + updateLine("NODE, One") + "\n" + updateLine("NODE, Two") + "\n[OK]\n");
}

TEST_F(PhaseExecutionTest, AFailedStartIsToldAfterItsVerdictAndTheNextElementStarts) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1));
    addFault(fault("update2"));
    prepare();
    options.noProgress = true;
    log.setObserver([this](const std::string& event) {
        if (event == said("\nUpdating:\n")) {
            log.clear();
        }
    });
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(3, 5));
    const std::vector<std::string> events = log.events();
    EXPECT_THAT(std::vector<std::string>(events.begin(), events.begin() + 10),
                ElementsAre(said("        NODE, One"), said(std::string(39, ' ')),
                            "update2 HCN[1] 1 -> status 1, errors 1", said("[ERROR]\n"), "elementError 0",
                            said("        NODE, Two"), said(std::string(39, ' ')), "update2 HCN[1] 2", said("\n"),
                            "sleep 500000"));
    EXPECT_THAT(textsOf(*element(0).errorLists[callErrors]), ElementsAre("Fault at update2."));
    EXPECT_THAT(textsOf(*element(0).errorLists[targetErrors]), IsEmpty());
}

TEST_F(PhaseExecutionTest, AStartWithAnErrorHasFailedWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("update2").status(0));
    EXPECT_FALSE(update());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_THAT(log.callsOf("updateStatus2"), IsEmpty());
}

TEST_F(PhaseExecutionTest, AStartWithoutAnErrorHasSucceededWhateverItsStatus) {
    addNodeElement(1, completeElement(1));
    addFault(fault("update2").status(7).noErrors());
    EXPECT_FALSE(update());
    // The target knows of no started update, of course.
    EXPECT_THAT(log.callsOf("updateStatus2"), ElementsAre("updateStatus2 HCN[1] 1 -> status 1, errors 1",
                                                          "updateStatus2 HCN[1] 1 -> status 1, errors 1"));
    EXPECT_EQ(log.events({Kind::pause})[0], "sleep 500000");
}

// Elements of the target's file system.

TEST_F(PhaseExecutionTest, AWrittenFileIsDoneWithoutAPause) {
    addClaimedFile("cfg/a.cfg");
    EXPECT_TRUE(update());
    EXPECT_THAT(states(), ElementsAre(5));
    EXPECT_EQ(target.folder().read("state/cfdrive/cfg/a.cfg"), "a.cfg");
    EXPECT_THAT(log.events({Kind::pause}), ElementsAre("sleep 200000"));
    EXPECT_EQ(printedUpdating(),
              "\nUpdating:\n" + updateLine("NODE, File") + "\n" + progressLine("100") + completeLine + "[OK]\n");
    EXPECT_THAT(log.callsOf("update2"), IsEmpty());
    EXPECT_THAT(log.callsOf("updateErrors2"), IsEmpty());
}

TEST_F(PhaseExecutionTest, AFileThatCannotBeWrittenFailsAndItsMessageFollowsTheCallback) {
    addClaimedFile("a.cfg");
    addFault(fault("KvHIM_renameFile"));
    prepare();
    options.noProgress = true;
    EXPECT_FALSE(run());
    EXPECT_THAT(states(), ElementsAre(3));
    EXPECT_EQ(printedUpdating(),
              "\nUpdating:\n" + updateLine("NODE, File") +
                  "[ERROR]\n            ERROR: Writing /mnt/cn/cfdrive/a.cfg failed. Cannot rename temporary file. "
                  "Status: -1\n[ERROR]\n");
    const std::vector<std::string> events = log.events({Kind::notification, Kind::message});
    const auto verdict = std::find(events.begin(), events.end(), said("[ERROR]\n"));
    ASSERT_NE(verdict, events.end());
    EXPECT_EQ(*std::next(verdict), "elementError 0");
    EXPECT_THAT(*std::next(verdict, 2), HasSubstr("Cannot rename temporary file"));
    EXPECT_EQ(element(0).hasErrors(), false);
}

TEST_F(PhaseExecutionTest, EveryMessageOfAWrittenFileHasALineOfItsOwnWhenVerbose) {
    addClaimedFile("cfg/a.cfg");
    prepare();
    options.noProgress = true;
    options.verbose = true;
    EXPECT_TRUE(run());
    EXPECT_EQ(printedUpdating(), "\nUpdating:\n" + updateLine("NODE, File") +
                                     "\n            Directory /mnt/cn/cfdrive/cfg created.\n"
                                     "            Successfully written /mnt/cn/cfdrive/cfg/a.cfg.\n[OK]\n");
}

TEST_F(PhaseExecutionTest, FilesAndUpdatesOfAPhaseGoInListOrderAndShareItsProgress) {
    node.element(completeFile(9, "a.cfg"));
    addNodeElement(1, completeElement(1, "One").polls(2));
    addFile("a.cfg", "a.cfg");
    EXPECT_TRUE(update());
    EXPECT_THAT(progress(), ElementsAre("progress 75", "progress 100", "progress 100"));
    const std::vector<std::string> calls = log.events({Kind::call});
    EXPECT_LT(std::find(calls.begin(), calls.end(), "KvHIM_deleteFTClientHandle"),
              std::find(calls.begin(), calls.end(), "update2 HCN[1] 1"));
}

// Progress.

struct ProgressCase {
    const char* name;
    std::function<void(ItemBuilder&)> answers;
    std::vector<std::string> expected;

    friend void PrintTo(const ProgressCase& row, std::ostream* stream) { *stream << row.name; }
};

class ProgressTest : public PhaseExecutionTest, public testing::WithParamInterface<ProgressCase> {};

TEST_P(ProgressTest, IsToldInEachRoundAndOnceMoreAtTheEnd) {
    ItemBuilder answering = completeElement(1);
    GetParam().answers(answering);
    addNodeElement(1, answering);
    EXPECT_TRUE(update());
    std::vector<std::string> expected;
    for (const std::string& percentage : GetParam().expected) {
        expected.push_back("progress " + percentage);
    }
    expected.insert(expected.end(), {"progress 100", "progress 100"});
    EXPECT_EQ(progress(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Answers, ProgressTest,
    testing::Values(ProgressCase{"RoundedDown",
                                 [](ItemBuilder& item) {
                                     item.progress({{0, 3}, {1, 3}, {2, 3}});
                                 },
                                 {"0", "33", "66"}},
                    ProgressCase{"TotalZeroIsComplete",
                                 [](ItemBuilder& item) {
                                     item.progress({{0, 0}, {7, 0}});
                                 },
                                 {"100", "100"}},
                    ProgressCase{"MoreThanTotal",
                                 [](ItemBuilder& item) {
                                     item.progress({{3, 1}});
                                 },
                                 {"300"}},
                    // 42949673 * 100 is 2^32 + 4.
                    ProgressCase{"Overflow",
                                 [](ItemBuilder& item) {
                                     item.progress({{42949672, 42949672}, {42949673, 1}, {42949673, 42949673}});
                                 },
                                 {"100", "4", "0"}},
                    ProgressCase{"LargestNumbers",
                                 [](ItemBuilder& item) {
                                     item.progress({{0xFFFFFFFF, 0xFFFFFFFF}});
                                 },
                                 {"0"}},
                    ProgressCase{"None", [](ItemBuilder& item) { item.progress({}); }, {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(PhaseExecutionTest, TheProgressOfAPhaseIsTheMeanOfItsElementsRoundedDown) {
    addBoard(1, completeElement(1).progress({{1, 10}, {2, 10}, {3, 10}}));
    addBoard(2, completeElement(1).progress({{1, 3}}));
    addBoard(3, completeElement(1).progress({{0, 1}, {99, 100}}));
    EXPECT_TRUE(update());
    EXPECT_THAT(progress(), ElementsAre("progress 14", "progress 73", "progress 76", "progress 100", "progress 100"));
}

TEST_F(PhaseExecutionTest, FailedElementsCountAsCompleteAndThoseLeftOutDoNotCount) {
    addBoard(1, completeElement(1).progress({{0, 1}, {0, 1}}));
    addBoard(2, completeElement(1).progress({{0, 1}}).finalState(3));
    addBoard(3, completeElement(1));
    addBoard(4, completeElement(1));
    archive.removeFile("io3.bin");
    addFault(fault("update2").at("IOMODULE[4]"));
    EXPECT_FALSE(update());
    EXPECT_THAT(progress(), ElementsAre("progress 33", "progress 66", "progress 100", "progress 100"));
}

TEST_F(PhaseExecutionTest, AProgressLineIsThePercentageTheSpinnerAndBlanksAndReturnsTheCarriage) {
    addNodeElement(1, completeElement(1, "One").progress({{1, 20}}));
    EXPECT_TRUE(update());
    EXPECT_EQ(printedUpdating(), "\nUpdating:\n" + updateLine("NODE, One") + "\n" + progressLine("  5") +
                                     progressLine("100") + progressLine("100") + completeLine + "[OK]\n");
}

TEST_F(PhaseExecutionTest, TheSpinnerTurnsAndGoesOnFromPhaseToPhase) {
    addNodeElement(1, completeElement(1).polls(5), 1);
    addNodeElement(2, completeElement(2).polls(1), 2);
    addNodeElement(3, completeElement(3).polls(1), 3);
    EXPECT_TRUE(update());
    ASSERT_FALSE(spinners().empty());
    EXPECT_EQ(spinners(), spinnerFrom(spinners()[0], 6 + 2 + 2));
}

TEST_F(PhaseExecutionTest, TheSpinnerGoesOnFromSessionToSession) {
    addNodeElement(1, completeElement(1).polls(2));
    options.forceUpdate = true;
    EXPECT_TRUE(update());
    const std::string first = spinners();
    ASSERT_EQ(first.size(), 3U);
    beginSession();
    EXPECT_TRUE(run());
    EXPECT_EQ(first + spinners(), spinnerFrom(first[0], 6));
}

TEST_F(PhaseExecutionTest, ARoundPrintsItsLineBeforeItTellsThePercentageAndPauses) {
    addNodeElement(1, completeElement(1).polls(1));
    EXPECT_TRUE(update());
    ASSERT_EQ(spinners().size(), 2U);
    const std::vector<std::string> events = log.events();
    const auto query = std::find(events.begin(), events.end(), "updateStatus2 HCN[1] 1");
    ASSERT_GE(std::distance(query, events.end()), 10);
    EXPECT_THAT(std::vector<std::string>(query, std::next(query, 10)),
                ElementsAre("updateStatus2 HCN[1] 1", said(spinnerLine(0)), "progress 100", "sleep 200000",
                            said(spinnerLine(1)), "progress 100", "sleep 200000", said(completeLine),
                            "updateErrors2 HCN[1] 1", said("[OK]\n")));
}

TEST_F(PhaseExecutionTest, WithoutProgressNoLineIsPrintedButTheCallbackIsCalled) {
    addNodeElement(1, completeElement(1, "One").polls(2));
    options.noProgress = true;
    EXPECT_TRUE(update());
    EXPECT_EQ(printedUpdating(), "\nUpdating:\n" + updateLine("NODE, One") + "\n[OK]\n");
    EXPECT_THAT(progress(), ElementsAre("progress 50", "progress 100", "progress 100"));
}

TEST_F(PhaseExecutionTest, TheSpinnerStandsStillWithoutProgress) {
    addNodeElement(1, completeElement(1).polls(1));
    EXPECT_TRUE(update());
    options.noProgress = true;
    EXPECT_TRUE(run());
    options.noProgress = false;
    EXPECT_TRUE(run());
    EXPECT_EQ(spinners(), spinnerFrom(spinners()[0], 4));
}

TEST_F(PhaseExecutionTest, APhaseWhoseUpdatesAllFailAtTheirStartPrintsOneCompleteLine) {
    addNodeElement(1, completeElement(1, "One"));
    addNodeElement(2, completeElement(2, "Two"));
    addFault(fault("update2").occurrence(0));
    EXPECT_FALSE(update());
    EXPECT_EQ(printedUpdating(), "\nUpdating:\n" + updateLine("NODE, One") + "[ERROR]\n" + updateLine("NODE, Two") +
                                     "[ERROR]\n" + progressLine("100") + completeLine + "[ERROR]\n");
    EXPECT_THAT(progress(), ElementsAre("progress 100"));
    EXPECT_THAT(log.callsOf("updateStatus2"), IsEmpty());
    EXPECT_EQ(KvEmulation::ledger().sleptMicroseconds, pollPause);
}

TEST_F(PhaseExecutionTest, APhaseWithNothingLeftToDoPrintsNothing) {
    addNodeElement(1, completeElement(1));
    archive.removeFile("node1.bin");
    EXPECT_FALSE(update());
    EXPECT_THAT(log.text(), Not(HasSubstr("Updating")));
    EXPECT_THAT(log.text(), Not(HasSubstr("%")));
    EXPECT_THAT(log.text(), Not(HasSubstr("[OK]")));
    EXPECT_THAT(progress(), IsEmpty());
    EXPECT_EQ(KvEmulation::ledger().sleeps, 0U);
}

TEST_F(PhaseExecutionTest, EveryStartAndEveryRoundIsFollowedByItsPause) {
    constexpr std::uint32_t polls = 7;
    addNodeElement(1, completeElement(1).polls(polls));
    addNodeElement(2, completeElement(2));
    addNodeElement(3, completeElement(3));
    addFault(fault("update2").id(3));
    EXPECT_FALSE(update());
    EXPECT_EQ(KvEmulation::ledger().sleeps, 2 + polls + 1);
    EXPECT_EQ(KvEmulation::ledger().sleptMicroseconds, 2 * startPause + (polls + 1) * pollPause);
}

TEST_F(PhaseExecutionTest, ALongUpdateIsPolledForAsLongAsItLasts) {
    constexpr std::uint32_t polls = 3000;
    addNodeElement(1, completeElement(1).polls(polls));
    options.noProgress = true;
    EXPECT_TRUE(update());
    EXPECT_EQ(log.callsOf("updateStatus2").size(), polls);
}
