#include "SessionMessages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace KvNReflasher;

/// The line that the library writes over and over.
std::string progress(const std::string& number, char spinner = '-') {
    return number + "% " + spinner + std::string(50, ' ') + "\r";
}

std::string reported(const std::string& messages) {
    return reportedMessages(messages, ReportData());
}

TEST(SessionMessages, OverwrittenProgressIsLeftOut) {
    EXPECT_EQ(reported("a\n" + progress("  0") + progress(" 50", '\\') + progress("100", '|') + "100% [OK]\nb\n"),
              "a\n100% [OK]\nb\n");
    EXPECT_EQ(reported(progress("4294967295", '/') + progress("1000")), "");
    EXPECT_EQ(reported(""), "");
}

TEST(SessionMessages, EveryOtherCarriageReturnIsShown) {
    const std::vector<std::string> texts{"    ERROR: A\rQB9999, SN 7, One:\n",
                                         "\r",
                                         "\r\n",
                                         "50% -\r",
                                         " 50% - \r",
                                         "x" + progress(" 50"),
                                         " 50% x" + std::string(50, ' ') + "\r",
                                         " 50% -" + std::string(49, ' ') + "x\r",
                                         " 50% -" + std::string(51, ' ') + "\r",
                                         progress("   "),
                                         progress("5 0"),
                                         progress(" 1000"),
                                         progress("50"),
                                         " 50% -" + std::string(50, ' ')};
    for (const std::string& text : texts) {
        std::string expected = text;
        if (const std::size_t place = text.find('\r'); place != std::string::npos) {
            expected.replace(place, 1, "\\x0D");
        }
        EXPECT_EQ(reported(text), expected);
    }
}

TEST(SessionMessages, ControlCharactersAreShown) {
    EXPECT_EQ(reported("a\tb\n\tPower-cycle\n\x1B[2J\xC2\x85\xFF\n"), "a\\x09b\n\tPower-cycle\n\\x1B[2J\\x85\\xFF\n");
}

/// A session with one element and one entry of these names.
class NamedSession {
public:
    explicit NamedSession(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            plan_.elements.emplace_back().displayName = name;
        }
        report_.plan = &plan_;
    }
    [[nodiscard]] std::string reported(const std::string& messages) const {
        return reportedMessages(messages, report_);
    }

private:
    KvTPlan plan_;
    ReportData report_;
};

TEST(SessionMessages, ALineFeedOfANameEndsNoLine) {
    const NamedSession session(
        {"A\nResults:\n    Update completed!, SN 7", "\nERROR: forged", "plain", "A\nB", "A\nBC"});
    EXPECT_EQ(session.reported("        A\nResults:\n    Update completed!, SN 7\nResults:\n"),
              "        A\\x0AResults:\\x0A    Update completed!, SN 7\nResults:\n");
    EXPECT_EQ(session.reported("1 | \nERROR: forged | 2\nERROR: true\n"), "1 | \\x0AERROR: forged | 2\nERROR: true\n");
    EXPECT_EQ(session.reported("plain\nplain\n"), "plain\nplain\n");
    EXPECT_EQ(session.reported("A\nBC A\nB\nA\nBD A\n"), "A\\x0ABC A\\x0AB\nA\\x0ABD A\n");
}

TEST(SessionMessages, ANameThatEndsWithALineFeedJoinsNoLines) {
    const NamedSession session({"[OK]\n", "\n\n", "A\nB\n"});
    EXPECT_EQ(session.reported("x [OK]\ny\n\n\nA\nB\n | 1\n"), "x [OK]\ny\n\n\nA\\x0AB\n | 1\n");
}

TEST(SessionMessages, NamesOfEntriesAreNames) {
    ReportData report;
    report.entries.emplace_back().fileName = "a\nUpdate completed successfully!.bin";
    EXPECT_EQ(reportedMessages("        a\nUpdate completed successfully!.bin   [OK]\n", report),
              "        a\\x0AUpdate completed successfully!.bin   [OK]\n");
}

TEST(SessionMessages, AProgressLineInANameHidesNothingElse) {
    const std::string hidden = progress(" 50");
    EXPECT_EQ(NamedSession({"A\n" + hidden + "B"}).reported("A\n" + hidden + "B\n"),
              "A\\x0A" + hidden.substr(0, hidden.size() - 1) + "\\x0DB\n");
}

} // namespace
