#include "ExitCodes.h"
#include "ExplanationText.h"
#include "FindingText.h"
#include "MatrixTables.h"
#include "PhasePicture.h"
#include "RedirectedStream.h"
#include "Report.h"
#include "SessionMessages.h"
#include "TextTable.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "ToolRack.h"
#include "ValueTexts.h"
#include "VerificationText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

// Names, versions and error texts come from archives and targets, and may hold anything.

namespace {
namespace hostile_texts {

using namespace KvNReflasher;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A text that somebody may have put into an archive or a target, and a harmless one of the same length class.
struct HostileText {
    const char* about;
    std::string text;
    std::string harmless = "x";
};

std::vector<HostileText> hostileTexts() {
    // NOLINTNEXTLINE(misc-misleading-bidirectional): such characters are what has to be shown
    const char* const turned = "a\xE2\x80\xAE\x62";
    return {{"a carriage return", "A\rQB9999"},
            {"a line feed", "A\nERROR: forged"},
            {"line ends of Windows", "A\r\n\r\nERROR: forged"},
            {"a tab", "A\tB"},
            {"an escape sequence", "A\x1B[2J\x1B]0;title\x07"},
            {"a next line", "A\xC2\x85\x42"},
            {"a line separator", "A\xE2\x80\xA8\x42"},
            {"a turned direction", turned},
            {"a character without width", "A\xE2\x80\x8B\x42"},
            {"a byte order mark", "\xEF\xBB\xBF\x41"},
            {"bytes of no character", "A\xFF\xC3(\xE2\x82\x9B"},
            {"a zero character", std::string("A\0B", 3)},
            {"markup", "</td></tr></table></title></svg></pre><b a=\"x\" c='y'>&amp;<!--"},
            {"an attribute", "\" onload=\"alert(1)\" x='"},
            {"4,000 bytes", std::string(4000, 'A'), std::string(4000, 'x')},
            {"4,000 control characters", std::string(4000, '\x1B'), std::string(4000, 'x')}};
}

KvTArchiveEntry entryOf(const std::string& text) {
    KvTArchiveEntry entry;
    entry.fileName = text;
    entry.version = KvTVersion{1, text};
    return entry;
}

KvTErrorInfo errorOf(const std::string& text) {
    return {.code = 7, .text = text, .function = text};
}

/// An element of a plan, all of its texts the same.
KvTPlannedElement elementOf(const std::string& text) {
    KvTPlannedElement element;
    for (std::string* const field :
         {&element.boardType, &element.boardVariant, &element.boardName, &element.unitName, &element.unitInstanceName,
          &element.rackName, &element.unitPath, &element.displayName, &element.typeName, &element.name,
          &element.address, &element.boardAddress, &element.targetPath}) {
        *field = text;
    }
    element.isFileSystemElement = true;
    element.installed.version = KvTVersion{1, text};
    element.entry = entryOf(text);
    element.decision = {.update = true, .reasons = {KvEReason::versionDiffers}};
    element.phase = 0;
    return element;
}

KvTPlan planOf(const std::string& text) {
    KvTPlan plan;
    plan.archive = KvTArchiveIdentity{text, text, text, text, text};
    plan.targetAddress = text;
    plan.elements = {elementOf(text)};
    return plan;
}

KvTVerification verificationOf(const std::string& text, bool succeeded) {
    KvTVerification verification;
    verification.look.succeeded = succeeded;
    verification.look.message = text;
    verification.look.errors = {errorOf(text)};
    verification.look.elements = {KvTInstalled{KvTVersion{1, text}, 1, true, true}};
    verification.elements.push_back(
        {.index = 0, .result = KvEVerified::differs, .found = verification.look.elements[0], .leftByPlan = true});
    return verification;
}

KvTMatrixTarget targetOf(const std::string& text) {
    KvTMatrixTarget target;
    target.folder = text;
    target.address = text;
    target.plan = planOf(text);
    return target;
}

KvTExplanation explanationOf(const std::string& text) {
    KvTExplanation explanation;
    KvTTriedEntry& tried = explanation.tried.emplace_back();
    tried.fileName = text;
    tried.failedTest = KvEMatchTest::boardType;
    tried.archiveValue = text;
    tried.elementValue = text;
    return explanation;
}

KvTFinding findingOf(const std::string& text) {
    KvTFinding finding;
    finding.code = "code";
    finding.path = text;
    finding.message = text;
    finding.hint = text;
    return finding;
}

/// What the tool itself prints with a text: in one line or several, the same whatever the text is.
struct Place {
    const char* name;
    std::function<std::string(const std::string& text)> print;
};

std::string saidOf(const std::function<void()>& speak) {
    const RedirectedStream errors(stderr);
    speak();
    return errors.received();
}

std::vector<Place> textPlaces() {
    return {
        {"a table",
         [](const std::string& text) {
             return tableText({{"A", "B"}, {text, text}});
         }},
        {"a target of the matrix", [](const std::string& text) { return matrixTargetText(targetOf(text), ""); }},
        {"the summary of the matrix",
         [](const std::string& text) { return matrixSummaryText({targetOf(text)}, {entryOf(text)}); }},
        {"an explanation",
         [](const std::string& text) { return explanationText(elementOf(text), explanationOf(text), 1); }},
        {"a version",
         [](const std::string& text) {
             KvTPlannedElement element = elementOf("x");
             element.installed.version = KvTVersion{1, text};
             return explanationText(element, {}, 1);
         }},
        {"a hidden element",
         [](const std::string& text) {
             return hiddenElementsText(
                 std::vector<KvTHiddenElement>{{text, text, {KvEHiddenBy::configuration}, text, 0, text}});
         }},
        {"a finding", [](const std::string& text) { return findingText({findingOf(text)}, text, text); }},
        {"a verification",
         [](const std::string& text) { return verificationText(planOf(text), verificationOf(text, true)); }},
        {"a verification without a look",
         [](const std::string& text) { return verificationText(planOf(text), verificationOf(text, false)); }},
        {"elements without entry",
         [](const std::string& text) {
             KvTPlan plan = planOf(text);
             plan.elements[0].entry.reset();
             return elementsWithoutEntryText(plan);
         }},
        {"an error", [](const std::string& text) { return errorText(errorOf(text)); }},
        {"the errors of a look", [](const std::string& text) { return errorsText({errorOf(text)}); }},
        {"what the tool says", [](const std::string& text) { return saidOf([&] { say(text); }); }},
        {"why a command has failed",
         [](const std::string& text) { return saidOf([&] {
                                           (void)conclude({KvEFailure::elements, text});
                                       }); }},
    };
}

/// A report whose texts are all the same. Its messages are those of a library that prints a name between others.
ReportData reportOf(const std::string& text, const KvTPlan& plan, const KvTVerification& verification) {
    ReportData report;
    report.facts.command = "update";
    report.facts.target = text;
    report.facts.archiveFolder = text;
    report.verdict = {KvEFailure::elements, text};
    report.plan = &plan;
    report.verification = &verification;
    report.outcome.elements.emplace_back().errors = {errorOf(text)};
    report.outcome.elements.back().result = KvEResult::failed;
    report.outcome.errors = {errorOf(text)};
    report.entries = {entryOf(text)};
    report.facts.messages = reportedMessages("\nResults:\n    ERROR: " + text + ":\n    Update failed!\n", report);
    return report;
}

std::string pageOf(const std::string& text, bool isLookedAt) {
    const KvTPlan plan = planOf(text);
    const KvTVerification verification = verificationOf(text, isLookedAt);
    return reportPage(reportOf(text, plan, verification));
}

std::string pictureOf(const std::string& text) {
    const KvTPlan plan = planOf(text);
    const KvTVerification verification = verificationOf(text, true);
    return phasePicture(reportOf(text, plan, verification));
}

std::vector<Place> markupPlaces() {
    return {{"a page", [](const std::string& text) { return pageOf(text, true); }},
            {"a page without a look", [](const std::string& text) { return pageOf(text, false); }},
            {"a picture", pictureOf}};
}

/// The tags of a page, with their attributes.
std::vector<std::string> tagsOf(const std::string& markup) {
    std::vector<std::string> tags;
    for (std::size_t begin = markup.find('<'); begin != std::string::npos; begin = markup.find('<', begin + 1)) {
        tags.push_back(markup.substr(begin, markup.find('>', begin) - begin));
    }
    return tags;
}

/// `shown` has the lines of `harmless`, and all characters of it can be seen.
void expectNothingForged(const std::string& shown, const std::string& harmless) {
    EXPECT_EQ(visibleInLines(shown), shown);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\t'), 0);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), std::count(harmless.begin(), harmless.end(), '\n'));
    EXPECT_THAT(shown, Not(HasSubstr("\nERROR: forged")));
}

TEST(HostileTexts, MakeAndHideNoLineWhereTheToolPrintsThem) {
    for (const HostileText& hostile : hostileTexts()) {
        for (const Place& place : textPlaces()) {
            SCOPED_TRACE(std::string(hostile.about) + " in " + place.name);
            expectNothingForged(place.print(hostile.text), place.print(hostile.harmless));
        }
    }
}

TEST(HostileTexts, MakeNoMarkupAndNoLineOfAPage) {
    for (const HostileText& hostile : hostileTexts()) {
        for (const Place& place : markupPlaces()) {
            SCOPED_TRACE(std::string(hostile.about) + " in " + place.name);
            const std::string shown = place.print(hostile.text);
            const std::string harmless = place.print(hostile.harmless);
            expectNothingForged(shown, harmless);
            EXPECT_EQ(tagsOf(shown), tagsOf(harmless));
        }
    }
}

TEST(HostileTexts, StayWholeInThePlacesThatShowThem) {
    const std::string text = "A\r<B>";
    for (const Place& place : textPlaces()) {
        EXPECT_THAT(place.print(text), AllOf(HasSubstr("A\\x0D"), HasSubstr("<B>"))) << place.name;
    }
    for (const Place& place : markupPlaces()) {
        EXPECT_THAT(place.print(text), HasSubstr("A\\x0D&lt;B&gt;")) << place.name;
    }
}

/// Whole runs with a board type, an element and a file of hostile names.
class HostileRack : public ToolRack {
protected:
    [[nodiscard]] std::string reportOfUpdate(const std::string& boardType, const std::string& report) {
        node = completeBoard("HCN", boardType, 7).element(completeElement(1, "One").reports(77, "Worn\rout."));
        archive.add(entry("node1.bin").board(boardType, 1));
        const ToolRun result = run("update", {"--report", reports.text() + "/" + report});
        EXPECT_EQ(result.exitCode, 1);
        lastLine = result.errors;
        return reports.read(report);
    }

    ScratchFolder reports;
    std::string lastLine;
};

TEST_F(HostileRack, ACarriageReturnHidesNoLineOfAPage) {
    EXPECT_THAT(reportOfUpdate("A\rQB9999", "report.html"),
                AllOf(HasSubstr("\n    ERROR: A\\x0DQB9999, SN 7, One:\n"),
                      HasSubstr("<td>A\\x0DQB9999, SN 7, One</td>"), HasSubstr("<td>Worn\\x0Dout.</td>"),
                      Not(HasSubstr("\r"))));
    EXPECT_THAT(lastLine, HasSubstr("the first is 'A\\x0DQB9999, SN 7, One'"));
}

TEST_F(HostileRack, ACarriageReturnHidesNoLineOfADocument) {
    const KvNJson::json document = KvNJson::json::parse(reportOfUpdate("A\rQB9999", "report.json"));
    EXPECT_THAT(std::string(document.view().find("messages").get_string()),
                AllOf(HasSubstr("\n    ERROR: A\\x0DQB9999, SN 7, One:\n"), Not(HasSubstr("\r"))));
    EXPECT_EQ(document.view().find("elements").at(0).find("boardType").get_string(), "A\rQB9999")
        << "values are as they are";
}

TEST_F(HostileRack, ALineFeedMakesNoLineOfAPage) {
    EXPECT_THAT(reportOfUpdate("A\n    Update completed successfully!\n", "report.html"),
                AllOf(HasSubstr("\n    ERROR: A\\x0A    Update completed successfully!\\x0A, SN 7, One:\n"),
                      Not(HasSubstr("\n    Update completed"))));
}

} // namespace hostile_texts
} // namespace
