#include "ArchiveCheck.h"

#include "Conclusion.h"
#include "FindingText.h"
#include "KvDocuments.h"
#include "KvIArchive.h"
#include "ToolOutput.h"
#include "Utf8.h"

#include <memory>
#include <string>
#include <vector>

using namespace KvNReflasher;

ExitCode checkArchive(const KvTCommandLine& line) {
    const std::unique_ptr<KvIArchive> archive(
        KvIArchive::createInstance(line.options.archiveFolder, line.options.descriptionFileName));
    const std::vector<KvTFinding> findings = archive->findings();
    const std::string file = utf8Of(line.options.archiveFolder) + "/" + utf8Of(line.options.descriptionFileName);
    KvTVerdict verdict;
    if (line.strict ? !findings.empty() : countOf(findings, KvESeverity::error) != 0) {
        verdict = {KvEFailure::archive, "'" + file + "' has " + findingCounts(findings)};
    }
    writeText(stdout, line.json ? checkDocument(findings, file, verdict) : findingText(findings, file));
    return conclude(verdict);
}
