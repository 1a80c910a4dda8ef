#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "JsonValues.h"
#include "KvDocuments.h"

#include <algorithm>
#include <cstdint>

// What an archive holds, and what is to be said about it.

namespace KvNReflasher {

namespace {

KvCJsonText countOf(const std::vector<KvTFinding>& findings, KvESeverity severity) {
    const auto hasSeverity = [severity](const KvTFinding& finding) { return finding.severity == severity; };
    return static_cast<std::uint64_t>(std::count_if(findings.begin(), findings.end(), hasSeverity));
}

} // namespace

std::string contentDocument(const KvTArchiveContent& content, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("content", verdict);
    if (content.verdict.isSuccess()) {
        document.set("archive", identityRecord(content.identity));
        document.set("release", releaseRecord(content.release));
        document.set("files", listOf(content.entries, entryRecord));
    }
    return documentText(document);
}

std::string checkDocument(const std::vector<KvTFinding>& findings, const std::string& file, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("check", verdict);
    document.set("findings",
                 listOf(findings, [&file](const KvTFinding& finding) { return findingRecord(finding, file); }));
    document.set("errors", countOf(findings, KvESeverity::error));
    document.set("warnings", countOf(findings, KvESeverity::warning));
    return documentText(document);
}

} // namespace KvNReflasher
