#include "FindingDocuments.h"

#include "CountedNoun.h"
#include "DocumentText.h"

#include <algorithm>
#include <cstdint>

namespace {

using KvNJson::json;
using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;

const char* severityText(KvESeverity severity) {
    return severity == KvESeverity::error ? "error" : "warning";
}

/// `text` on one line: what would break it is shown as JSON writes it.
std::string onOneLine(const std::string& text) {
    std::string line;
    line.reserve(text.size());
    for (const char character : text) {
        if (character == '\n') {
            line += "\\n";
        } else if (character == '\r') {
            line += "\\r";
        } else {
            line += character;
        }
    }
    return line;
}

std::string paragraph(const KvTFinding& finding, const std::string& file) {
    const std::string place = file + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column);
    std::string text = onOneLine(place + ": " + severityText(finding.severity) + ": " + finding.message);
    text.append(" [").append(finding.code).append("]\n    ");
    return text + onOneLine(finding.path + ": " + finding.hint) + "\n\n";
}

json record(const KvTFinding& finding, const std::string& file) {
    json result = json::makeObject();
    result.set("severity", severityText(finding.severity));
    result.set("code", std::string_view(finding.code));
    result.set("file", std::string_view(file));
    result.set("line", static_cast<std::uint64_t>(finding.line));
    result.set("column", static_cast<std::uint64_t>(finding.column));
    result.set("path", std::string_view(finding.path));
    result.set("message", std::string_view(finding.message));
    result.set("hint", std::string_view(finding.hint));
    return result;
}

} // namespace

std::size_t countOf(const std::vector<KvTFinding>& findings, KvESeverity severity) {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const KvTFinding& finding) { return finding.severity == severity; }));
}

std::string findingText(const std::vector<KvTFinding>& findings, const std::string& file) {
    if (findings.empty()) {
        return "No findings.\n";
    }
    std::string text;
    for (const KvTFinding& finding : findings) {
        text += paragraph(finding, file);
    }
    return text + counted(countOf(findings, KvESeverity::error), "error") + ", " +
           counted(countOf(findings, KvESeverity::warning), "warning") + "\n";
}

std::string findingDocument(const std::vector<KvTFinding>& findings, const std::string& file) {
    json records = json::makeArray();
    for (const KvTFinding& finding : findings) {
        records.append(record(finding, file));
    }
    json document = json::makeObject();
    document.set("findings", std::move(records));
    document.set("errors", static_cast<std::uint64_t>(countOf(findings, KvESeverity::error)));
    document.set("warnings", static_cast<std::uint64_t>(countOf(findings, KvESeverity::warning)));
    return documentText(document);
}
