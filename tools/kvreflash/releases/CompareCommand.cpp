#include "CompareCommand.h"

#include "ComparisonText.h"
#include "KvDocuments.h"
#include "PathTexts.h"
#include "Texts.h"
#include "ToolOutput.h"

#include <utility>

using namespace KvNReflasher;

void ComparedArchives::addTo(CommandSyntax& syntax) {
    syntax.addArgument("OLD", "Folder or package of the earlier archive", keptIn(before), Occurs::once);
    syntax.addArgument("NEW", "Folder or package of the later archive", keptIn(after), Occurs::once);
    syntax.addOption("-d,--description", "FILE", "Description file inside both archives (default: archive.json)",
                     keptIn(description));
    trust.addTo(syntax);
}

/// The plan for the target with an archive; nothing if a verdict says why there is none.
std::optional<KvTPlan> CompareCommand::planWith(const std::string& archive, std::vector<std::string> emulatedTargets,
                                                KvTVerdict& verdict) {
    SessionRequest request = this->request(showUpdatePlan);
    request.options.archiveFolder = wideOf(archive);
    request.options.descriptionFileName = wideOf(archives.description);
    request.release = archives.trust.options();
    request.emulatedTargets = std::move(emulatedTargets);
    ToolSession session(std::move(request));
    session.keepMessages();
    if (!session.prepare()) {
        writeText(stderr, session.messages());
        verdict.add(session.verdict());
        return std::nullopt;
    }
    verdict.add(session.select());
    return *session->plan();
}

/// Says which of the archives was refused.
KvTVerdict CompareCommand::verdictOf(const KvTComparison& comparison) const {
    KvTVerdict verdict = comparison.verdict;
    if (!verdict.isSuccess()) {
        const std::string& refused = comparison.before.verdict.isSuccess() ? archives.after : archives.before;
        verdict.message = quotedPath(archivePath(refused)) + ": " +
                          withPastablePath(std::move(verdict.message), refused, archives.description);
    }
    return verdict;
}

ExitCode CompareCommand::run() {
    const std::wstring description = wideOf(archives.description);
    const KvTComparison comparison = compareArchives({wideOf(archives.before), description},
                                                     {wideOf(archives.after), description}, archives.trust.options());
    KvTVerdict verdict = verdictOf(comparison);
    std::optional<KvTPlan> before;
    std::optional<KvTPlan> after;
    if (!verdict.isSuccess()) {
        writeText(stderr,
                  comparison.before.verdict.isSuccess() ? comparison.after.messages : comparison.before.messages);
    } else if (!host.host.empty()) {
        before = planWith(archives.before, common.emulatedTargets, verdict);
        // They are served already.
        after = before ? planWith(archives.after, {}, verdict) : std::nullopt;
    }
    if (json.isWanted) {
        writeText(stdout, compareDocument(comparison, before ? &*before : nullptr, after ? &*after : nullptr, verdict));
    } else if (comparison.verdict.isSuccess()) {
        writeText(stdout, comparisonText(comparison));
        if (before && after) {
            writeText(stdout, comparedPlansText(*before, *after));
        }
    }
    return conclude(verdict);
}
