#include "FindingText.h"

#include "PathTexts.h"
#include "Texts.h"

#include <algorithm>

using namespace KvNReflasher;

namespace {

const char* severityText(KvESeverity severity) {
    return severity == KvESeverity::error ? "error" : "warning";
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

std::string findingLine(const KvTFinding& finding, const std::string& folder, const std::string& description) {
    std::string line = shellWord(archivePath(folder + "/" + description));
    line.append(":").append(std::to_string(finding.line)).append(":").append(std::to_string(finding.column));
    line.append(": ").append(severityText(finding.severity)).append(": ");
    line.append(withPastablePath(finding.message, folder, description));
    return visibleInLine(line.append(" [").append(finding.code).append("]"));
}

std::string findingText(const std::vector<KvTFinding>& findings, const std::string& folder,
                        const std::string& description) {
    if (findings.empty()) {
        return "No findings.\n";
    }
    std::string text;
    for (const KvTFinding& finding : findings) {
        text += findingLine(finding, folder, description) + "\n    ";
        text += visibleInLine(finding.path + ": " + finding.hint) + "\n\n";
    }
    return text + findingCounts(findings) + "\n";
}
