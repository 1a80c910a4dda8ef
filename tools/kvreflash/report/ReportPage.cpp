#include "PathTexts.h"
#include "PhasePicture.h"
#include "ReleaseText.h"
#include "Report.h"
#include "Texts.h"
#include "ValueTexts.h"
#include "VerificationText.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

using namespace KvNReflasher;

namespace {

constexpr std::string_view style = R"(
body { font: 15px/1.45 system-ui, sans-serif; margin: 2em auto; max-width: 76em; padding: 0 1.5em; color: #1c2530; }
h1 { font-size: 1.6em; margin-bottom: 0.2em; } h2 { font-size: 1.2em; margin-top: 1.8em; }
table { border-collapse: collapse; } th, td { text-align: left; padding: 0.3em 0.9em 0.3em 0; vertical-align: top; }
.wide th { border-bottom: 2px solid #8494a5; } .wide td { border-bottom: 1px solid #dbe2e9; }
.scroll { overflow-x: auto; } pre { background: #f3f5f7; padding: 1em; overflow-x: auto; }
.verdict { display: inline-block; padding: 0.25em 0.8em; border-radius: 4px; color: #ffffff; font-weight: 600; }
.good { background: #2f7d4f; } .bad { background: #b13a2b; } td.failed, td.uncertain, td.fault { color: #b13a2b; font-weight: 600; }
td.updated, td.planned { color: #2f7d4f; font-weight: 600; }
.shortened { color: #5b6b7c; }
svg { max-width: 100%; height: auto; }
svg .phase { font: 600 14px system-ui, sans-serif; fill: #1c2530; } svg .name { font: 12px system-ui, sans-serif; fill: #1c2530; }
svg .arrow { fill: none; stroke: #8494a5; stroke-width: 2; }
svg rect.planned { fill: #d5e6f6; stroke: #6f9dc8; } svg rect.updated { fill: #d5eedd; stroke: #5fa97b; }
svg rect.failed { fill: #f8d9d4; stroke: #cf7264; } svg rect.uncertain { fill: #f7ecd0; stroke: #c9a64a; }
)";

/// More columns of a text in a table, and of a line of the messages, are left out.
/// @{
constexpr std::size_t longestText = 200;
constexpr std::size_t longestLine = 1000;
/// @}

bool isFault(const KvTVerifiedElement& one) {
    return one.result == KvEVerified::differs || one.result == KvEVerified::gone ||
           one.result == KvEVerified::unchanged;
}

/// What a command that succeeds, and one that fails, has to show.
struct VerdictWords {
    std::string_view command;
    const char* good;
    const char* bad;
};
constexpr std::array verdictWords = {VerdictWords{"update", "Update completed", "Update failed"},
                                     VerdictWords{"plan", "Plan", "Plan failed"},
                                     VerdictWords{"verify", "As expected", "Not as expected"}};

std::string verdict(const ReportData& report) {
    const auto* words = std::find_if(verdictWords.begin(), verdictWords.end() - 1,
                                     [&](const VerdictWords& row) { return row.command == report.facts.command; });
    const bool isGood = report.verdict.isSuccess();
    std::string text = "<p><span class=\"verdict ";
    text.append(isGood ? "good" : "bad").append("\">").append(isGood ? words->good : words->bad).append("</span>");
    if (!isGood) {
        text.append(" ").append(markupText(report.verdict.message));
    }
    return text + "</p>\n";
}

std::string titleOf(const ReportData& report) {
    return (report.isUpdate()                  ? "Firmware update of "
            : report.facts.command == "verify" ? "Verification of "
                                               : "Plan of a firmware update of ") +
           report.facts.target;
}

/// The sections of a page, which counts the texts that it shortens.
class Page {
public:
    explicit Page(const ReportData& report) : report_(report) {}

    [[nodiscard]] std::string facts() {
        const std::string address = report_.plan != nullptr ? report_.plan->targetAddress : std::string();
        const bool isOther = !address.empty() && address != report_.facts.target;
        std::string text =
            "<table>\n" + factRow("Target", report_.facts.target + (isOther ? " (" + address + ")" : ""));
        if (report_.plan != nullptr && report_.plan->archive) {
            const KvTArchiveIdentity& archive = *report_.plan->archive;
            text += factRow("Archive", archive.archiveName + " " + archive.archiveVersion);
            text += factRow("Product", archive.productName +
                                           (archive.archiveVariant.empty() ? "" : ", " + archive.archiveVariant));
        }
        text += releaseRows();
        // A path is not cut: it is there to be pasted.
        text += "<tr>" + cell("Archive folder", "th") + "<td>" +
                markupText(shellWord(archivePath(report_.facts.archiveFolder))) + "</td></tr>\n";
        text += factRow("Begin", report_.facts.begin) + factRow("End", report_.facts.end) +
                factRow("Tool", "kvreflash " + report_.facts.toolVersion);
        return text + "</table>\n";
    }

    [[nodiscard]] std::string elementTable() {
        if (report_.plan == nullptr || report_.plan->elements.empty()) {
            return "<p>No elements are known.</p>\n";
        }
        std::string text = "<div class=\"scroll\"><table class=\"wide\">\n<tr><th>No.</th><th>Element</th>"
                           "<th>Before</th><th>Checksum</th><th>Update file</th><th>Available</th><th>Checksum</th>";
        text += isLookedAt() ? "<th>After</th><th>Checksum</th>" : "";
        text += "<th>Result</th>";
        text += report_.verification != nullptr ? "<th>Verification</th>" : "";
        text += "</tr>\n";
        for (const KvTPlannedElement& element : report_.plan->elements) {
            text += elementRow(element);
        }
        return text + "</table></div>\n";
    }

    /// The errors of elements, of the session and of the look; empty if there are none.
    [[nodiscard]] std::string errorTable() {
        std::string rows;
        for (std::size_t index = 0; index < report_.outcome.elements.size(); ++index) {
            const bool isKnown = report_.plan != nullptr && index < report_.plan->elements.size();
            rows += errorRows(std::to_string(index), isKnown ? report_.plan->elements[index].displayName : "",
                              report_.outcome.elements[index].errors);
        }
        rows += errorRows("", "session", report_.outcome.errors);
        if (report_.verification != nullptr) {
            rows += errorRows("", "session, looking at the target afterwards", report_.verification->look.errors);
        }
        return rows.empty() ? rows
                            : "<h2>Reported errors</h2>\n<div class=\"scroll\"><table class=\"wide\">\n<tr><th>No.</th>"
                              "<th>Element</th><th>Error</th><th>Reported by</th><th>Text</th></tr>\n" +
                                  rows + "</table></div>\n";
    }

    [[nodiscard]] std::string messages() {
        std::string text = "<h2>Messages of the session</h2>\n<pre>";
        std::string_view rest = report_.facts.messages;
        while (!rest.empty()) {
            const std::size_t size = std::min(rest.find('\n'), rest.size());
            const std::string line(rest.substr(0, size));
            text += beginningOf(line, longestLine).isCut ? shortened(line, longestLine) : markupLines(line);
            text += size < rest.size() ? "\n" : "";
            rest.remove_prefix(std::min(size + 1, rest.size()));
        }
        return text + "</pre>\n";
    }

    /// What the sections so far have shortened; empty if nothing.
    [[nodiscard]] std::string remarkOnShortened() const {
        if (shortenedCount_ == 0) {
            return "";
        }
        return "<p class=\"shortened\">" + counted(shortenedCount_, "long text") + " of this page " +
               (shortenedCount_ == 1 ? "is" : "are") + " shortened: tables show " + std::to_string(longestText) +
               " columns of a text, the messages " + std::to_string(longestLine) +
               " of a line. A report in JSON has them whole.</p>\n";
    }

private:
    /// `text` as markup, with a mark and its length if it is cut.
    [[nodiscard]] std::string shortened(const std::string& text, std::size_t limit) {
        const Beginning beginning = beginningOf(text, limit);
        if (!beginning.isCut) {
            return markupText(text);
        }
        ++shortenedCount_;
        return markupText(beginning.shown) + "<span class=\"shortened\">\xE2\x80\xA6 (" +
               counted(beginning.characterCount, "character") + ")</span>";
    }

    /// An element of a table row; `kind` is its tag.
    [[nodiscard]] std::string cell(const std::string& text, const char* kind = "td", const char* styleClass = "") {
        std::string markup = "<";
        markup.append(kind);
        if (*styleClass != '\0') {
            markup.append(" class=\"").append(styleClass).append("\"");
        }
        return markup.append(">").append(shortened(text, longestText)).append("</").append(kind).append(">");
    }

    [[nodiscard]] std::string factRow(const char* name, const std::string& value) {
        return "<tr>" + cell(name, "th") + cell(value) + "</tr>\n";
    }

    /// Who vouches for the archive; empty if nobody does.
    [[nodiscard]] std::string releaseRows() {
        if (report_.plan == nullptr || !report_.plan->release) {
            return "";
        }
        const KvTRelease& release = *report_.plan->release;
        std::string rows;
        for (const auto& [name, value] :
             {std::pair("Release", releaseText(release)), std::pair("Manifest SHA-256", release.manifestDigest),
              std::pair("Trust folder", release.trustFolder)}) {
            rows += value.empty() ? "" : factRow(name, value);
        }
        return rows;
    }

    [[nodiscard]] bool isLookedAt() const {
        return report_.verification != nullptr && report_.verification->look.succeeded;
    }

    [[nodiscard]] std::string afterCells(const KvTPlannedElement& element) {
        if (!isLookedAt()) {
            return "";
        }
        const std::optional<KvTInstalled>& found = report_.verification->look.elements.at(element.index);
        if (!found) {
            return cell("not reported") + cell("");
        }
        return cell(versionCell(found->version)) + cell(checksumCell(found->checksumCrc32));
    }

    [[nodiscard]] std::string elementRow(const KvTPlannedElement& element) {
        const std::optional<KvTArchiveEntry>& entry = element.entry;
        std::string text = "<tr>" + cell(std::to_string(element.index)) + cell(element.displayName) +
                           cell(versionCell(element.installed.version)) +
                           cell(checksumCell(element.installed.checksumCrc32)) + cell(entry ? entry->fileName : "") +
                           cell(entry ? versionCell(entry->version) : "") +
                           cell(entry ? checksumCell(entry->checksumCrc32) : "") + afterCells(element) +
                           cell(report_.wordFor(element), "td", report_.styleOf(element));
        if (report_.verification != nullptr) {
            const KvTVerifiedElement* one = report_.verificationOf(element);
            text +=
                cell(one != nullptr ? wordsFor(one->result) : "", "td", one != nullptr && isFault(*one) ? "fault" : "");
        }
        return text + "</tr>\n";
    }

    [[nodiscard]] std::string errorRows(const std::string& number, const std::string& name,
                                        const std::vector<KvTErrorInfo>& errors) {
        std::string rows;
        for (const KvTErrorInfo& error : errors) {
            rows += "<tr>" + cell(number) + cell(name) + cell(codeText(error)) + cell(originText(error)) +
                    cell(error.text) + "</tr>\n";
        }
        return rows;
    }

    const ReportData& report_;
    std::size_t shortenedCount_ = 0;
};

/// Why the target could not be looked at afterwards.
std::string lookText(const ReportData& report) {
    if (report.verification == nullptr || report.verification->look.succeeded) {
        return "";
    }
    return "<p>The target cannot be looked at afterwards: " + markupText(report.verification->look.message) + "</p>\n";
}

} // namespace

std::string reportPage(const ReportData& report) {
    Page page(report);
    const std::string title = markupText(titleOf(report));
    const std::string facts = page.facts();
    const std::string picture = phasePicture(report);
    std::string sections;
    if (!picture.empty()) {
        sections += "<h2>Phases</h2>\n<div class=\"scroll\">\n" + picture + "</div>\n";
    }
    sections += "<h2>Elements</h2>\n" + lookText(report) + page.elementTable() + page.errorTable() + page.messages();
    std::string text("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    text.append(title).append("</title>\n<style>").append(style).append("</style>\n</head>\n<body>\n<h1>");
    text.append(title).append("</h1>\n").append(verdict(report)).append(facts).append(page.remarkOnShortened());
    return text.append(sections).append("</body>\n</html>\n");
}
