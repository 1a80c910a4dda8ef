#include "PhasePicture.h"
#include "Report.h"
#include "ValueTexts.h"
#include "VerificationText.h"

#include <algorithm>
#include <array>
#include <string_view>

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
svg { max-width: 100%; height: auto; }
svg .phase { font: 600 14px system-ui, sans-serif; fill: #1c2530; } svg .name { font: 12px system-ui, sans-serif; fill: #1c2530; }
svg .arrow { fill: none; stroke: #8494a5; stroke-width: 2; }
svg rect.planned { fill: #d5e6f6; stroke: #6f9dc8; } svg rect.updated { fill: #d5eedd; stroke: #5fa97b; }
svg rect.failed { fill: #f8d9d4; stroke: #cf7264; } svg rect.uncertain { fill: #f7ecd0; stroke: #c9a64a; }
)";

/// An element of a table row; `kind` is its tag.
std::string cell(const std::string& text, const char* kind = "td", const char* styleClass = "") {
    std::string markup = "<";
    markup.append(kind);
    if (*styleClass != '\0') {
        markup.append(" class=\"").append(styleClass).append("\"");
    }
    return markup.append(">").append(markupText(text)).append("</").append(kind).append(">");
}

std::string factRow(const char* name, const std::string& value) {
    return "<tr>" + cell(name, "th") + cell(value) + "</tr>\n";
}

std::string facts(const ReportData& report) {
    const std::string address = report.plan != nullptr ? report.plan->targetAddress : std::string();
    const bool isOther = !address.empty() && address != report.facts.target;
    std::string text = "<table>\n" + factRow("Target", report.facts.target + (isOther ? " (" + address + ")" : ""));
    if (report.plan != nullptr && report.plan->archive) {
        const KvTArchiveIdentity& archive = *report.plan->archive;
        text += factRow("Archive", archive.archiveName + " " + archive.archiveVersion);
        text += factRow("Product",
                        archive.productName + (archive.archiveVariant.empty() ? "" : ", " + archive.archiveVariant));
    }
    text += factRow("Archive folder", report.facts.archiveFolder) + factRow("Begin", report.facts.begin) +
            factRow("End", report.facts.end) + factRow("Tool", "kvreflash " + report.facts.toolVersion);
    return text + "</table>\n";
}

std::string afterCells(const ReportData& report, const KvTPlannedElement& element) {
    if (report.verification == nullptr || !report.verification->look.succeeded) {
        return "";
    }
    const std::optional<KvTInstalled>& found = report.verification->look.elements.at(element.index);
    if (!found) {
        return cell("not reported") + cell("");
    }
    return cell(versionCell(found->version)) + cell(checksumCell(found->checksumCrc32));
}

bool isFault(const KvTVerifiedElement& one) {
    return one.result == KvEVerified::differs || one.result == KvEVerified::gone ||
           one.result == KvEVerified::unchanged;
}

std::string elementRow(const ReportData& report, const KvTPlannedElement& element) {
    const std::optional<KvTArchiveEntry>& entry = element.entry;
    std::string text = "<tr>" + cell(std::to_string(element.index)) + cell(element.displayName) +
                       cell(versionCell(element.installed.version)) +
                       cell(checksumCell(element.installed.checksumCrc32)) + cell(entry ? entry->fileName : "") +
                       cell(entry ? versionCell(entry->version) : "") +
                       cell(entry ? checksumCell(entry->checksumCrc32) : "") + afterCells(report, element) +
                       cell(report.wordFor(element), "td", report.styleOf(element));
    if (report.verification != nullptr) {
        const KvTVerifiedElement* one = report.verificationOf(element);
        text += cell(one != nullptr ? wordsFor(one->result) : "", "td", one != nullptr && isFault(*one) ? "fault" : "");
    }
    return text + "</tr>\n";
}

std::string elementTable(const ReportData& report) {
    if (report.plan == nullptr || report.plan->elements.empty()) {
        return "<p>No elements are known.</p>\n";
    }
    std::string text = "<div class=\"scroll\"><table class=\"wide\">\n<tr><th>No.</th><th>Element</th><th>Before</th>"
                       "<th>Checksum</th><th>Update file</th><th>Available</th><th>Checksum</th>";
    const bool isLookedAt = report.verification != nullptr && report.verification->look.succeeded;
    text += isLookedAt ? "<th>After</th><th>Checksum</th>" : "";
    text += "<th>Result</th>";
    text += report.verification != nullptr ? "<th>Verification</th>" : "";
    text += "</tr>\n";
    for (const KvTPlannedElement& element : report.plan->elements) {
        text += elementRow(report, element);
    }
    return text + "</table></div>\n";
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

/// What went wrong with looking at the target afterwards.
std::string lookText(const ReportData& report) {
    if (report.verification == nullptr) {
        return "";
    }
    const KvTLook& look = report.verification->look;
    std::string text =
        look.succeeded ? "" : "<p>The target cannot be looked at afterwards: " + markupText(look.message) + "</p>\n";
    if (!look.errors.empty()) {
        text += "<pre>" + markupLines(errorsText(look.errors)) + "</pre>\n";
    }
    return text;
}

} // namespace

std::string reportPage(const ReportData& report) {
    const std::string title = (report.isUpdate()                  ? "Firmware update of "
                               : report.facts.command == "verify" ? "Verification of "
                                                                  : "Plan of a firmware update of ") +
                              report.facts.target;
    const std::string picture = phasePicture(report);
    std::string page("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    page.append(markupText(title)).append("</title>\n<style>").append(style);
    page += "</style>\n</head>\n<body>\n<h1>";
    page += markupText(title) + "</h1>\n" + verdict(report) + facts(report);
    if (!picture.empty()) {
        page += "<h2>Phases</h2>\n<div class=\"scroll\">\n" + picture + "</div>\n";
    }
    page += "<h2>Elements</h2>\n" + lookText(report) + elementTable(report);
    page += "<h2>Messages of the session</h2>\n<pre>" + markupLines(report.facts.messages) + "</pre>\n";
    return page + "</body>\n</html>\n";
}
