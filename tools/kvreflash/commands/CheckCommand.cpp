#include "CheckCommand.h"

#include "EmulatedTargets.h"
#include "FindingText.h"
#include "KvDocuments.h"
#include "PathTexts.h"
#include "Texts.h"
#include "ToolOutput.h"

#include <memory>
#include <utility>

using namespace KvNReflasher;

namespace {

KvTVerdict verdictOf(const std::vector<KvTFinding>& findings, const std::string& file, bool isStrict) {
    const bool isRefused = isStrict ? !findings.empty() : countOf(findings, KvESeverity::error) != 0;
    return isRefused ? KvTVerdict{KvEFailure::archive, quotedPath(file) + " has " + findingCounts(findings)}
                     : KvTVerdict();
}

} // namespace

void FindingOptions::addTo(CommandSyntax& syntax) {
    syntax.addSwitch("--strict", isStrict, "Refuse an archive with warnings, too");
    syntax.addOption("--format", "FORMAT",
                     "How findings are written: text or json (the same as --json) (default: text)",
                     [this](const std::string& word) {
                         const bool isJson = meaningOf<bool>("--format", word, {{"text", false}, {"json", true}});
                         if (json.isWanted && !isJson) {
                             refuse("--json contradicts --format " + word);
                         }
                         json.isWanted = isJson;
                     });
    json.addTo(syntax);
}

ExitCode CheckCommand::run() {
    const std::unique_ptr<KvIArchive> reader(
        KvIArchive::createInstance(wideOf(archive.folder), wideOf(archive.description), archive.trust.options()));
    const std::string file = archivePath(archive.folder + "/" + archive.description);
    // No target is needed, but whoever names one must name it well.
    if (std::string fault = serveEmulatedTargets(common.emulatedTargets); !fault.empty()) {
        return show({}, file, {KvEFailure::target, std::move(fault)});
    }
    const std::vector<KvTFinding> found = reader->findings();
    return show(found, file, verdictOf(found, file, findings.isStrict));
}

ExitCode CheckCommand::show(const std::vector<KvTFinding>& found, const std::string& file,
                            const KvTVerdict& verdict) const {
    if (findings.json.isWanted) {
        writeText(stdout, checkDocument(found, file, verdict));
    } else if (verdict.failure != KvEFailure::target) {
        writeText(stdout, findingText(found, archive.folder, archive.description));
    }
    return conclude(verdict);
}
