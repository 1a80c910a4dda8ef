#include "ArchiveCheck.h"

#include "Conclusion.h"
#include "EmulatedTargets.h"
#include "FindingText.h"
#include "KvDocuments.h"
#include "KvIArchive.h"
#include "ToolOutput.h"
#include "Utf8.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

KvTVerdict verdictOf(const std::vector<KvTFinding>& findings, const std::string& file, bool isStrict) {
    const bool isRefused = isStrict ? !findings.empty() : countOf(findings, KvESeverity::error) != 0;
    return isRefused ? KvTVerdict{KvEFailure::archive, "'" + file + "' has " + findingCounts(findings)} : KvTVerdict();
}

ExitCode show(const KvTCommandLine& line, const std::vector<KvTFinding>& findings, const std::string& file,
              const KvTVerdict& verdict) {
    if (line.json) {
        writeText(stdout, checkDocument(findings, file, verdict));
    } else if (verdict.failure != KvEFailure::target) {
        writeText(stdout, findingText(findings, file));
    }
    return conclude(verdict);
}

} // namespace

ExitCode checkArchive(const KvTCommandLine& line) {
    const std::unique_ptr<KvIArchive> archive(
        KvIArchive::createInstance(line.options.archiveFolder, line.options.descriptionFileName));
    const std::string file = utf8Of(line.options.archiveFolder) + "/" + utf8Of(line.options.descriptionFileName);
    // No target is needed, but whoever names one must name it well.
    if (std::string fault = serveEmulatedTargets(line.emulatedTargets); !fault.empty()) {
        return show(line, {}, file, {KvEFailure::target, std::move(fault)});
    }
    const std::vector<KvTFinding> findings = archive->findings();
    return show(line, findings, file, verdictOf(findings, file, line.strict));
}
