#include "PlanMatrix.h"

#include "MatrixDocument.h"
#include "MatrixSessions.h"
#include "MatrixTables.h"
#include "ToolOutput.h"

#include <algorithm>

namespace {

void tellFailure(const KvTMatrixTarget& target) {
    say("'" + target.folder + "' cannot be planned for:");
    writeText(stderr, *target.error + "\n");
}

/// Writes what is known of a target before the next one's turn.
void tellTarget(const KvTMatrixTarget& target, bool json) {
    if (target.error) {
        tellFailure(target);
    } else if (!json) {
        writeMatrixTarget(target);
    } else if (!target.messages.empty()) {
        say("'" + target.folder + "':");
        writeText(stderr, target.messages);
    }
}

bool isPlanned(const KvTMatrixTarget& target) {
    return !target.error;
}

/// The entries that fit nothing on any target; none when nothing was planned. Every session has read the same archive,
/// unless somebody changes it meanwhile.
std::vector<KvTMatrixEntry> unmatchedEntriesOf(const KvTMatrixArchive& archive,
                                               const std::vector<KvTMatrixTarget>& targets) {
    std::vector<KvTMatrixEntry> unmatched;
    if (std::none_of(targets.begin(), targets.end(), isPlanned)) {
        return unmatched;
    }
    for (std::size_t index = 0; index < archive.entries.size(); ++index) {
        const auto fits = [index](const KvTMatrixTarget& target) {
            return index < target.matchCounts.size() && target.matchCounts[index] != 0;
        };
        if (std::none_of(targets.begin(), targets.end(), fits)) {
            unmatched.push_back(archive.entries[index]);
        }
    }
    return unmatched;
}

} // namespace

ExitCode showMatrix(const KvTCommandLine& line) {
    const std::optional<KvTMatrixArchive> archive = readMatrixArchive(line.options);
    if (!archive) {
        return exitFailed;
    }
    writeText(line.json ? stderr : stdout, archive->messages);
    std::vector<KvTMatrixTarget> targets;
    for (const std::string& folder : line.emulatedTargets) {
        targets.push_back(planMatrixTarget(line.options, *archive, folder));
        tellTarget(targets.back(), line.json);
    }
    const std::vector<KvTMatrixEntry> unmatchedEntries = unmatchedEntriesOf(*archive, targets);
    if (line.json) {
        writeText(stdout, matrixDocument(archive->info, targets, unmatchedEntries));
    } else {
        writeMatrixSummary(targets, unmatchedEntries);
    }
    return std::all_of(targets.begin(), targets.end(), isPlanned) ? exitSuccess : exitFailed;
}
