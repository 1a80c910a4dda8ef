#include "Report.h"
#include "KvCVersion.h"
#include "PathTexts.h"
#include "PhasePicture.h"
#include "ScratchFolder.h"
#include "TimeText.h"
#include "ToolRack.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Reports : public ToolRack {
protected:
    /// Runs a command with a report and returns it; the command's exit code must be this one.
    std::string report(const std::string& command, const std::string& name, int exitCode,
                       std::vector<std::string> options = {}) {
        options.insert(options.end(), {"--report", reports_.text() + "/" + name});
        const ToolRun result = run(command, options);
        EXPECT_EQ(exitCode, result.exitCode) << result.output << result.errors;
        output = result.output;
        return reports_.read(name);
    }
    KvNJson::json document(const std::string& command, int exitCode, const std::vector<std::string>& options = {}) {
        return KvNJson::json::parse(report(command, "report.json", exitCode, options));
    }
    static KvNJson::jsonView element(const KvNJson::json& document, std::size_t index) {
        return document.view().find("elements").at(index);
    }

    std::string output;

private:
    ScratchFolder reports_;
};

TEST_F(Reports, APlanTellsWhatAnUpdateWouldDo) {
    addNodeElement(1, "One");
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElement(2, "Two")));
    const KvNJson::json plan = document("plan", 0);
    EXPECT_EQ("kvreflash.plan", plan.view().find("format").find("name").get_string());
    EXPECT_EQ("127.0.0.1", plan.view().find("target").find("address").get_string());
    EXPECT_EQ("Archive", plan.view().find("archive").find("archiveName").get_string());
    EXPECT_EQ(0U, plan.view().find("exitCode").get_unsigned());
    EXPECT_EQ(output, plan.view().find("messages").get_string());
    EXPECT_EQ("not-started", element(plan, 0).find("outcome").get_string());
    EXPECT_EQ("1.0", element(plan, 0).find("installed").find("version").get_string());
    EXPECT_EQ("node1.bin", element(plan, 0).find("entry").find("name").get_string());
    EXPECT_EQ(0U, element(plan, 0).find("phase").get_unsigned());
    EXPECT_TRUE(element(plan, 0).find("after").is_null());
    EXPECT_EQ("not-planned", element(plan, 1).find("outcome").get_string());
    EXPECT_TRUE(element(plan, 1).find("entry").is_null());
    EXPECT_TRUE(element(plan, 1).find("phase").is_null());
}

TEST_F(Reports, AnUpdateTellsWhatTheElementsHadAndHave) {
    addNodeElement(1, "One");
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("2.0"), 2));
    const KvNJson::json update = document("update", 0, {"--verify"});
    EXPECT_EQ("updated", element(update, 0).find("outcome").get_string());
    EXPECT_EQ(1U, element(update, 0).find("installed").find("checksumCrc32").get_unsigned());
    EXPECT_EQ(2U, element(update, 0).find("after").find("checksumCrc32").get_unsigned());
    EXPECT_EQ("2.0", element(update, 0).find("after").find("version").get_string());
    EXPECT_EQ("as-expected", element(update, 0).find("verification").get_string());
}

TEST_F(Reports, AFailedElementIsToldWithTheErrorsOfTheTarget) {
    node.element(completeElement(1, "One").reports(77, "Flash <worn> & gone"));
    archive.add(entry("node1.bin").board("NODE", 1));
    addNodeElement(2, "Two");
    addNodeElement(3, "Three");
    archive.folder().write("node3.bin", firmwareImage(KvCVersion("2.0"), 2));
    const KvNJson::json update = document("update", 1);
    EXPECT_EQ("failed", element(update, 0).find("outcome").get_string());
    EXPECT_EQ("Flash <worn> & gone", element(update, 0).find("errors").at(0).find("text").get_string());
    EXPECT_EQ("updated", element(update, 1).find("outcome").get_string());
    EXPECT_EQ(0U, element(update, 1).find("errors").size());
    EXPECT_EQ("updated", element(update, 2).find("outcome").get_string());
    EXPECT_EQ(1U, update.view().find("exitCode").get_unsigned());
    const std::string page = report("update", "report.html", 1);
    EXPECT_THAT(page, AllOf(HasSubstr("Update failed"), HasSubstr("Flash &lt;worn&gt; &amp; gone"),
                            HasSubstr("class=\"failed\""), Not(HasSubstr("<worn>"))));
}

TEST_F(Reports, APageNeedsNoOtherFile) {
    addNodeElement(1, "One");
    const std::string page = report("plan", "report.html", 0);
    EXPECT_THAT(page, AllOf(HasSubstr("<!DOCTYPE html>"), HasSubstr("<svg"), HasSubstr("Phase 0"),
                            HasSubstr("NODE, SN 7, One")));
    EXPECT_THAT(page, AllOf(Not(HasSubstr("src=")), Not(HasSubstr("href=")), Not(HasSubstr("url("))));
}

TEST_F(Reports, WithoutAPlanTheMessagesAreReported) {
    addNodeElement(1, "One");
    const KvNJson::json plan = document("plan", 3, {"-d", "none.json"});
    EXPECT_EQ("archive", plan.view().find("failure").get_string());
    EXPECT_EQ(0U, plan.view().find("elements").size());
    EXPECT_THAT(std::string(plan.view().find("messages").get_string()),
                HasSubstr("ERROR: Failed to read firmware archive.\n"));
    EXPECT_THAT(report("plan", "report.html", 3, {"-d", "none.json"}), HasSubstr("Plan failed"));
}

TEST_F(Reports, WhatProgressHasOverwrittenIsLeftOut) {
    addNodeElement(1, "One");
    const KvNJson::json update = document("update", 0, {"--progress", "line"});
    EXPECT_THAT(output, HasSubstr("\r"));
    EXPECT_THAT(
        std::string(update.view().find("messages").get_string()),
        AllOf(Not(HasSubstr("\r")), HasSubstr("\n100%                                                    [OK]\n")));
}

TEST_F(Reports, EachErrorIsListedOnceWithItsElement) {
    node.element(completeElement(1, "One").reports(0x2004, "Flash worn."));
    archive.add(entry("node1.bin").board("NODE", 1));
    target.add(fault("unlock").error(0x10, "Still locked."));
    const std::string page = report("update", "report.html", 1);
    const std::size_t begin = page.find("<h2>Reported errors</h2>");
    ASSERT_NE(begin, std::string::npos);
    const std::string section = page.substr(begin, page.find("<h2>", begin + 1) - begin);
    const auto rows = std::count(section.begin(), section.end(), '\n') - 4;
    EXPECT_EQ(rows, 2) << section;
    EXPECT_THAT(section, AllOf(HasSubstr("<tr><td>0</td><td>NODE, SN 7, One</td><td>ERROR 0x2004</td><td>Host PC</td>"
                                         "<td>Flash worn.</td></tr>\n"),
                               HasSubstr("<tr><td></td><td>session</td><td>ERROR 0x10</td><td>Host PC</td>"
                                         "<td>Still locked.</td></tr>\n")));
    EXPECT_THAT(page, HasSubstr("ERROR 0x2004 (reported by Host PC):\n")) << "in the base of the library";
}

TEST_F(Reports, AnErrorOfTheLookIsListed) {
    addNodeElement(1, "One");
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("2.0"), 2));
    target.add(fault("scan").occurrence(2).error(0x2fff, "Fault at scan."));
    EXPECT_THAT(report("update", "report.html", 0),
                HasSubstr("<td>session, looking at the target afterwards</td><td>ERROR 0x2fff</td>"));
}

TEST_F(Reports, WithoutErrorsThereIsNoListOfThem) {
    addNodeElement(1, "One");
    EXPECT_THAT(report("plan", "report.html", 0), Not(HasSubstr("Reported errors")));
}

TEST(ReportPages, TheArchiveFolderCanBePasted) {
    ReportData report;
    report.facts.archiveFolder = "my\\archive x";
    EXPECT_THAT(reportPage(report), HasSubstr("<th>Archive folder</th><td>" +
                                              markupText(quotedPath(archivePath("my\\archive x"))) + "</td>"));
}

TEST_F(Reports, AFileThatCannotBeWrittenFails) {
    addNodeElement(1, "One");
    const std::string path = archive.folder().text() + "/missing/report.html";
    for (const char* command : {"plan", "update"}) {
        const ToolRun result = run(command, {"--report", path});
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ("", result.output) << "nothing has happened yet";
        EXPECT_EQ("kvreflash: cannot write " + quotedPath(path) + ": " + std::generic_category().message(ENOENT) + "\n",
                  result.errors);
    }
    EXPECT_THAT(run("plan").output, HasSubstr("| 1 != 2    | N"));
}

TEST_F(Reports, AFolderInPlaceOfTheFileFails) {
    addNodeElement(1, "One");
    const ScratchFolder folder;
    const std::filesystem::path path = folder.path() / "report.html";
    std::filesystem::create_directory(path);
    const ToolRun result = run("plan", {"--report", folder.text() + "/report.html"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_THAT(result.errors, HasSubstr(quotedPath(folder.text() + "/report.html") + ": " +
                                         std::generic_category().message(EISDIR) + "\n"));
}

TEST_F(Reports, NothingButTheReportIsLeftInItsFolder) {
    addNodeElement(1, "One");
    const ScratchFolder folder;
    EXPECT_EQ(0, run("plan", {"--report", folder.text() + "/report.html"}).exitCode);
    EXPECT_EQ(0, run("plan", {"--report", folder.text() + "/other.html"}).exitCode);
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(folder.path()), {}));
}

TEST_F(Reports, APlanOfATargetThatIsNotSupportedNamesWhatDecidesIt) {
    addNodeElement(1, "One");
    node.element(completeElement(2, "Two"));
    const KvNJson::json plan = document("plan", 2);
    EXPECT_EQ("unsupported", plan.view().find("failure").get_string());
    ASSERT_EQ(1U, plan.view().find("unsupportedElements").size());
    EXPECT_EQ(1U, plan.view().find("unsupportedElements").at(0).get_unsigned());
    EXPECT_THAT(report("plan", "report.html", 2),
                AllOf(HasSubstr("Plan failed"), HasSubstr("it has no entry for 'NODE, SN 7, Two'"),
                      HasSubstr("<td>NODE, SN 7, One</td>")));
}

/// Each element of the page has the word for what became of it.
TEST_F(Reports, APageShowsTheWordsOfTheOutcome) {
    addNodeElement(1, "One");
    addNodeElement(2, "Two");
    archive.removeFile("node1.bin");
    boards.push_back(completeBoard("IOMODULE", "IO", 8).element(completeElement(1, "Three")));
    const std::string page = report("update", "report.html", 1);
    EXPECT_THAT(page, AllOf(HasSubstr("class=\"failed\">file missing</td>"),
                            HasSubstr("class=\"updated\">updated</td>"), HasSubstr("<td>no entry</td>")));
}

TEST_F(Reports, APageOfARefusedLockCallsNothingUpdated) {
    addNodeElement(1, "One");
    target.add(fault("lock"));
    const std::string page = report("update", "report.html", 5, {"--force"});
    EXPECT_THAT(page, AllOf(HasSubstr("class=\"uncertain\">not started</td>"), Not(HasSubstr(">updated<"))));
}

TEST(OutcomeWords, AreThoseOfTheOutcome) {
    using KvNReflasher::KvEResult;
    KvNReflasher::KvTPlannedElement element;
    element.decision.update = true;
    ReportData report;
    report.facts.command = "update";
    EXPECT_EQ("planned", report.wordFor(element)) << "nothing is known of it";
    struct Row {
        KvEResult result;
        const char* word;
        const char* style;
    };
    for (const Row& row :
         {Row{KvEResult::notStarted, "not started", "uncertain"}, Row{KvEResult::fileMissing, "file missing", "failed"},
          Row{KvEResult::cancelled, "cancelled", "failed"}, Row{KvEResult::failed, "failed", "failed"},
          Row{KvEResult::updated, "updated", "updated"}, Row{KvEResult::inProgress, "in progress", "uncertain"}}) {
        report.outcome.elements.assign(1, {});
        report.outcome.elements.front().result = row.result;
        EXPECT_EQ(row.word, report.wordFor(element));
        EXPECT_STREQ(row.style, report.styleOf(element));
    }
    report.facts.command = "plan";
    EXPECT_EQ("planned", report.wordFor(element));
    element.decision = {.update = false, .reasons = {KvNReflasher::KvEReason::upToDate}};
    EXPECT_EQ("up to date", report.wordFor(element));
    EXPECT_STREQ("", report.styleOf(element));
}

TEST(PhasePicture, IsEmptyWithoutUpdates) {
    EXPECT_EQ("", phasePicture(ReportData()));
}

TEST(PhasePicture, LongPhasesAreCut) {
    KvNReflasher::KvTPlan plan;
    ReportData report;
    report.plan = &plan;
    for (std::uint32_t index = 0; index < 50; ++index) {
        KvNReflasher::KvTPlannedElement& element = plan.elements.emplace_back();
        element.index = index;
        element.decision.update = true;
        element.phase = 0;
        element.displayName = "Element \xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4"
                              "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4 " +
                              std::to_string(index);
    }
    const std::string picture = phasePicture(report);
    EXPECT_THAT(picture,
                AllOf(HasSubstr("... and 10 more"), HasSubstr("\xC3\xA4 10</text>"), HasSubstr(">Element \xC3\xA4")));
}

/// A plan of so many elements, each in a phase of its own.
KvNReflasher::KvTPlan planOfPhases(std::uint32_t count, const std::string& name) {
    KvNReflasher::KvTPlan plan;
    for (std::uint32_t index = 0; index < count; ++index) {
        KvNReflasher::KvTPlannedElement& element = plan.elements.emplace_back();
        element.index = index;
        element.decision.update = true;
        element.phase = index;
        element.displayName = name;
    }
    return plan;
}

std::ptrdiff_t occurrencesOf(const std::string& text, const std::string& part) {
    std::ptrdiff_t count = 0;
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

TEST(PhasePicture, LongNamesAreCutBetweenCharacters) {
    const KvNReflasher::KvTPlan plan = planOfPhases(1, std::string(33, 'x') + "\xC3\xA4\xC3\xB6");
    ReportData report;
    report.plan = &plan;
    EXPECT_THAT(phasePicture(report), HasSubstr(std::string(33, 'x') + "\xC3\xA4\xE2\x80\xA6</text>"));
}

TEST(PhasePicture, ManyPhasesAreCounted) {
    const KvNReflasher::KvTPlan plan = planOfPhases(100000, "Element");
    ReportData report;
    report.plan = &plan;
    const std::string picture = phasePicture(report);
    EXPECT_THAT(picture,
                AllOf(HasSubstr(">Phase 39<"), Not(HasSubstr(">Phase 40<")), HasSubstr(">... and 99960 more phases<")));
    EXPECT_LT(picture.size(), 30000U);
}

class LongReports : public testing::Test {
protected:
    [[nodiscard]] std::string page() {
        report_.facts.command = "update";
        report_.plan = &plan;
        report_.outcome.elements.resize(plan.elements.size());
        report_.facts.messages = messages;
        return reportPage(report_);
    }

    KvNReflasher::KvTPlan plan = planOfPhases(2, "Element");
    std::string messages;

private:
    ReportData report_;
};

TEST_F(LongReports, APageSaysNothingOfShorteningIfNothingIsShortened) {
    plan.elements[0].displayName = std::string(200, 'x');
    messages = std::string(1000, 'x') + "\n";
    EXPECT_THAT(page(), AllOf(Not(HasSubstr("<p class=\"shortened\">")), HasSubstr(std::string(1000, 'x') + "\n")));
}

TEST_F(LongReports, LongTextsOfTablesAreShortenedAndTheirLengthIsStated) {
    plan.elements[0].displayName = std::string(4096, 'x');
    plan.elements[1].entry.emplace().fileName = std::string(300, 'y');
    const std::string text = page();
    EXPECT_THAT(text,
                AllOf(HasSubstr("<td>" + std::string(200, 'x') +
                                "<span class=\"shortened\">\xE2\x80\xA6 (4096 characters)</span></td>"),
                      HasSubstr(std::string(200, 'y') + "<span class=\"shortened\">\xE2\x80\xA6 (300 characters)"),
                      HasSubstr("<p class=\"shortened\">2 long texts of this page are shortened: tables show 200 "
                                "columns of a text, the messages 1000 of a line. A report in JSON has them "
                                "whole.</p>\n"),
                      Not(HasSubstr(std::string(201, 'x')))));
}

TEST_F(LongReports, LongLinesOfTheMessagesAreShortened) {
    messages = "a\n" + std::string(1001, 'z') + "\n\tb\n";
    EXPECT_THAT(page(), AllOf(HasSubstr("<pre>a\n" + std::string(1000, 'z') +
                                        "<span class=\"shortened\">\xE2\x80\xA6 (1001 characters)</span>\n\tb\n</pre>"),
                              HasSubstr("<p class=\"shortened\">1 long text of this page is shortened: ")));
}

TEST_F(LongReports, EachElementHasOneRow) {
    plan = planOfPhases(1000, std::string(4096, 'x'));
    const std::string text = page();
    EXPECT_EQ(occurrencesOf(text, "<tr><td>"), 1000);
    EXPECT_LT(text.size(), 1000000U);
}

TEST(ReportTimes, AreInUniversalTime) {
    EXPECT_EQ("1970-01-01T00:00:00Z", timeText(std::chrono::system_clock::time_point()));
    EXPECT_EQ("2024-02-29T12:34:56Z",
              timeText(std::chrono::system_clock::time_point(std::chrono::seconds(1709210096))));
}

TEST(MarkupText, HoldsNoMarkupAndNoControlCharacters) {
    EXPECT_EQ("&lt;b&gt; &amp; &quot;x&quot; \\x1B[2J\\x0A\xC3\xA4", markupText("<b> & \"x\" \x1B[2J\n\xC3\xA4"));
    EXPECT_EQ("&lt;b&gt; \\x1B[2J\n\xC3\xA4", markupLines("<b> \x1B[2J\n\xC3\xA4"));
}

} // namespace
