#include "KnownValues.h"
#include "PhasePicture.h"
#include "Report.h"
#include "TableLayout.h"

#include <string_view>

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

std::string versionOf(const KvCVersion& version) {
    return std::string(versionCell(version).view());
}

std::string facts(const KvTReport& report) {
    std::string text =
        "<table>\n" + factRow("Target", report.target + (report.address.empty() || report.address == report.target
                                                             ? ""
                                                             : " (" + report.address + ")"));
    if (report.archive) {
        const KvTArchiveInfo& archive = *report.archive;
        text += factRow("Archive", std::string(archive.archiveName.view()) + " " + versionOf(archive.archiveVersion));
        text += factRow(
            "Product", std::string(archive.productName.view()) +
                           (archive.archiveVariant.isEmpty() ? "" : ", " + std::string(archive.archiveVariant.view())));
    }
    text += factRow("Archive folder", report.archiveFolder) + factRow("Begin", timeText(report.begin)) +
            factRow("End", timeText(report.end)) + factRow("Tool", "kvreflash " + report.toolVersion);
    return text + "</table>\n";
}

std::string afterCells(const KvTReport& report, const KvTPlannedElement& element) {
    if (!report.after) {
        return "";
    }
    const auto found = report.after->find(element.address);
    if (found == report.after->end()) {
        return cell("not reported") + cell("");
    }
    return cell(versionOf(found->second.version)) + cell(checksumCell(found->second.checksum));
}

std::string outcomeText(const KvTReport& report, const KvTPlannedElement& element) {
    const KvEOutcome outcome = report.outcomeOf(element);
    if (outcome != KvEOutcome::untouched) {
        return wordFor(outcome);
    }
    if (element.upToDate) {
        return "up to date";
    }
    return element.file == noArchiveFile ? "no entry" : "disabled";
}

std::string elementRow(const KvTReport& report, const KvTPlannedElement& element) {
    const bool hasEntry = element.file != noArchiveFile;
    std::string text = "<tr>" + cell(std::to_string(element.index)) + cell(element.displayName) +
                       cell(versionOf(element.installed.version)) + cell(checksumCell(element.installed.checksum)) +
                       cell(hasEntry ? element.fileName : "") +
                       cell(hasEntry ? versionOf(element.availableVersion) : "") +
                       cell(hasEntry ? checksumCell(element.availableChecksum) : "") + afterCells(report, element) +
                       cell(outcomeText(report, element), "td", wordFor(report.outcomeOf(element)));
    if (!report.verified.empty()) {
        const KvTVerifiedElement* one = report.verificationOf(element);
        text +=
            cell(one != nullptr ? wordsFor(one->result) : "", "td", one != nullptr && one->isFault() ? "fault" : "");
    }
    return text + "</tr>\n";
}

std::string elementTable(const KvTReport& report) {
    if (report.elements.empty()) {
        return "<p>No elements are known.</p>\n";
    }
    std::string text = "<div class=\"scroll\"><table class=\"wide\">\n<tr><th>No.</th><th>Element</th><th>Before</th>"
                       "<th>Checksum</th><th>Update file</th><th>Available</th><th>Checksum</th>";
    text += report.after ? "<th>After</th><th>Checksum</th>" : "";
    text += "<th>Result</th>";
    text += report.verified.empty() ? "" : "<th>Verification</th>";
    text += "</tr>\n";
    for (const KvTPlannedElement& element : report.elements) {
        text += elementRow(report, element);
    }
    return text + "</table></div>\n";
}

std::string verdict(const KvTReport& report) {
    const bool isGood = report.result == exitSuccess;
    std::string text = "<p><span class=\"verdict ";
    text.append(isGood ? "good" : "bad").append("\">");
    if (report.isUpdate) {
        text.append(isGood ? "Update completed" : "Update failed");
    } else {
        text.append(isGood ? "Plan" : "No plan");
    }
    return text.append("</span></p>\n");
}

} // namespace

std::string reportPage(const KvTReport& report) {
    const std::string title =
        (report.isUpdate ? "Firmware update of " : "Plan of a firmware update of ") + report.target;
    const std::string picture = phasePicture(report);
    std::string page("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>");
    page.append(markupText(title)).append("</title>\n<style>").append(style);
    page += "</style>\n</head>\n<body>\n<h1>";
    page += markupText(title) + "</h1>\n" + verdict(report) + facts(report);
    if (!picture.empty()) {
        page += "<h2>Phases</h2>\n<div class=\"scroll\">\n" + picture + "</div>\n";
    }
    page += "<h2>Elements</h2>\n" + elementTable(report);
    page += "<h2>Messages of the session</h2>\n<pre>" + markupText(report.messages) + "</pre>\n";
    return page + "</body>\n</html>\n";
}
