#include "FindingText.h"

#include "Texts.h"

#include <algorithm>

using namespace KvNReflasher;

namespace {

const char* severityText(KvESeverity severity) {
    return severity == KvESeverity::error ? "error" : "warning";
}

/// `text` on one line: line ends are shown as JSON writes them.
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
    return visibleInLine(line);
}

std::string paragraph(const KvTFinding& finding, const std::string& file) {
    return findingLine(finding, file) + "\n    " + onOneLine(finding.path + ": " + finding.hint) + "\n\n";
}

} // namespace

std::size_t countOf(const std::vector<KvTFinding>& findings, KvESeverity severity) {
    return static_cast<std::size_t>(
        std::count_if(findings.begin(), findings.end(),
                      [severity](const KvTFinding& finding) { return finding.severity == severity; }));
}

std::string findingCounts(const std::vector<KvTFinding>& findings) {
    return counted(countOf(findings, KvESeverity::error), "error") + ", " +
           counted(countOf(findings, KvESeverity::warning), "warning");
}

std::string findingLine(const KvTFinding& finding, const std::string& file) {
    const std::string place = file + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column);
    std::string text = onOneLine(place + ": " + severityText(finding.severity) + ": " + finding.message);
    return text.append(" [").append(finding.code).append("]");
}

std::string findingText(const std::vector<KvTFinding>& findings, const std::string& file) {
    if (findings.empty()) {
        return "No findings.\n";
    }
    std::string text;
    for (const KvTFinding& finding : findings) {
        text += paragraph(finding, file);
    }
    return text + findingCounts(findings) + "\n";
}
