#include "PlanMatrix.h"

#include "Conclusion.h"
#include "EmulatedTargets.h"
#include "ErrorText.h"
#include "KvDocuments.h"
#include "MatrixTables.h"
#include "Remarks.h"
#include "ToolOutput.h"
#include "ToolSession.h"
#include "Utf8.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

/// The plans for all targets of the command line, one session for each.
class PlanMatrix {
public:
    explicit PlanMatrix(const KvTCommandLine& line) : line_(line) {}

    [[nodiscard]] ExitCode perform() {
        if (readArchive()) {
            writeText(line_.json ? stderr : stdout, archiveMessages_);
            for (const std::string& folder : line_.emulatedTargets) {
                planTarget(folder);
            }
            addVerdictOfTargets();
        }
        if (line_.json) {
            writeText(stdout, matrixDocument(content_, targets_, verdict_));
        } else if (!targets_.empty()) {
            writeText(stdout, matrixSummaryText(targets_, unmatchedEntries(content_, targets_)));
        }
        return conclude(verdict_);
    }

private:
    /// What all plans have in common: the content, and what every session says of it.
    [[nodiscard]] bool readArchive() {
        KvTCommandLine line = line_;
        line.options.mode = showArchiveContent;
        line.emulatedTargets.clear();
        ToolSession session(line);
        session.keepMessages();
        const bool isRead = session.prepare();
        verdict_.add(session.verdict());
        content_.identity = archiveIdentity(session.get());
        content_.entries = session->archiveEntries();
        content_.verdict = verdict_;
        archiveMessages_ = session.messages();
        if (!isRead) {
            writeText(stderr, archiveMessages_);
        }
        return isRead;
    }

    void planTarget(const std::string& folder) {
        KvTMatrixTarget& target = targets_.emplace_back();
        target.folder = folder;
        if (std::string error = serveAlone(folder, target.address); !error.empty()) {
            target.verdict = {KvEFailure::target, std::move(error)};
        } else if (target.address.empty()) {
            target.verdict = {KvEFailure::target, "The target has no address."};
        }
        std::string messages;
        if (target.verdict.isSuccess()) {
            messages = runSession(target);
        }
        tell(target, messages);
    }

    /// Plans for a target that is served; returns what the session has said beyond what every session says.
    [[nodiscard]] std::string runSession(KvTMatrixTarget& target) const {
        KvTCommandLine line = line_;
        line.options.target = wideOf(target.address);
        line.emulatedTargets.clear(); // it is served already
        ToolSession session(line);
        session.keepMessages();
        const bool isPrepared = session.prepare();
        const KvTOutcome outcome = session->outcome();
        target.verdict = outcome.verdict;
        std::string messages = ownMessages(session.messages());
        for (const KvTErrorInfo& error : outcome.errors) {
            messages += "       " + errorText(error) + "\n";
        }
        if (isPrepared && !outcome.errors.empty()) {
            target.verdict = {KvEFailure::errors, "errors were reported, so that the plan may be incomplete"};
        } else if (isPrepared) {
            target.plan = *session->plan();
        }
        return messages;
    }

    [[nodiscard]] std::string ownMessages(std::string_view messages) const {
        messages.remove_prefix(messages.starts_with(archiveMessages_) ? archiveMessages_.size() : 0);
        return std::string(messages);
    }

    /// Writes what is known of a target before the next one's turn.
    void tell(const KvTMatrixTarget& target, const std::string& messages) const {
        if (!target.plan) {
            say("'" + target.folder + "' cannot be planned for: " + target.verdict.message);
            writeText(stderr, messages);
        } else if (!line_.json) {
            writeText(stdout, matrixTargetText(target, messages));
        } else if (!messages.empty()) {
            say("'" + target.folder + "':");
            writeText(stderr, messages);
        }
    }

    void addVerdictOfTargets() {
        const auto failed = std::count_if(targets_.begin(), targets_.end(),
                                          [](const KvTMatrixTarget& target) { return !target.plan.has_value(); });
        for (const KvTMatrixTarget& target : targets_) {
            verdict_.add({target.verdict.failure, std::to_string(failed) + " of " + std::to_string(targets_.size()) +
                                                      " targets cannot be planned for; '" + target.folder +
                                                      "': " + target.verdict.message});
        }
    }

    const KvTCommandLine& line_;
    KvTArchiveContent content_;
    std::string archiveMessages_;
    std::vector<KvTMatrixTarget> targets_;
    KvTVerdict verdict_;
};

} // namespace

ExitCode showMatrix(const KvTCommandLine& line) {
    return PlanMatrix(line).perform();
}
