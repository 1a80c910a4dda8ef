#include "FindingText.h"

#include "PathTexts.h"
#include "Texts.h"

#include <algorithm>

using namespace KvNReflasher;

namespace {

const char* severityText(KvESeverity severity) {
    return severity == KvESeverity::error ? "error" : "warning";
}

/// Where the description of an archive is.
struct Place {
    const std::string& folder;
    const std::string& description;
    /// As it is shown.
    std::string file;
};

std::string paragraph(const KvTFinding& finding, const Place& place) {
    std::string head = place.file;
    head.append(":").append(std::to_string(finding.line)).append(":").append(std::to_string(finding.column));
    head.append(": ").append(severityText(finding.severity)).append(": ");
    head.append(withPastablePath(finding.message, place.folder, place.description));
    head.append(" [").append(finding.code).append("]");
    return visibleInLine(head) + "\n    " + visibleInLine(finding.path + ": " + finding.hint) + "\n\n";
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

std::string findingText(const std::vector<KvTFinding>& findings, const std::string& folder,
                        const std::string& description) {
    if (findings.empty()) {
        return "No findings.\n";
    }
    const Place place{folder, description, shellWord(archivePath(folder + "/" + description))};
    std::string text;
    for (const KvTFinding& finding : findings) {
        text += paragraph(finding, place);
    }
    return text + findingCounts(findings) + "\n";
}
