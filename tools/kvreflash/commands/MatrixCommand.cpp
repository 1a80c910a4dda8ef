#include "MatrixCommand.h"

#include "EmulatedTargets.h"
#include "KvDocuments.h"
#include "MatrixTables.h"
#include "PathTexts.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "ValueTexts.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

using namespace KvNReflasher;

namespace {

/// The plans for all targets of a request, one session for each.
class PlanMatrix {
public:
    PlanMatrix(SessionRequest request, bool isJson) : request_(std::move(request)), isJson_(isJson) {}

    [[nodiscard]] ExitCode planAll() {
        if (readArchive()) {
            writeText(request_.textStream, archiveMessages_);
            for (const std::string& folder : request_.emulatedTargets) {
                planTarget(folder);
            }
            addVerdictOfTargets();
        }
        if (isJson_) {
            writeText(stdout, matrixDocument(content_, targets_, verdict_));
        } else if (!targets_.empty()) {
            writeText(stdout, matrixSummaryText(targets_, unmatchedEntries(content_, targets_)));
        }
        return conclude(verdict_);
    }

private:
    /// What all plans have in common: the content, and what every session says of it.
    [[nodiscard]] bool readArchive() {
        SessionRequest request = request_;
        request.options.mode = showArchiveContent;
        request.emulatedTargets.clear();
        ToolSession session(std::move(request));
        session.keepMessages();
        const bool isRead = session.prepare();
        session.remarkOnRelease();
        verdict_.add(session.verdict());
        content_ = session.archiveContent();
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
            messages = planInSession(target);
        }
        tell(target, messages);
    }

    /// Plans for a target that is served; returns what the session has said beyond what every session says.
    [[nodiscard]] std::string planInSession(KvTMatrixTarget& target) const {
        SessionRequest request = request_;
        request.options.target = wideOf(target.address);
        request.emulatedTargets.clear(); // it is served already
        ToolSession session(std::move(request));
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
            say(quotedPath(target.folder) + " cannot be planned for: " + target.verdict.message);
            writeText(stderr, messages);
        } else if (!isJson_) {
            writeText(stdout, matrixTargetText(target, messages));
        } else if (!messages.empty()) {
            say(quotedPath(target.folder) + ":");
            writeText(stderr, messages);
        }
    }

    void addVerdictOfTargets() {
        const auto failed = std::count_if(targets_.begin(), targets_.end(),
                                          [](const KvTMatrixTarget& target) { return !target.plan.has_value(); });
        for (const KvTMatrixTarget& target : targets_) {
            verdict_.add({target.verdict.failure, std::to_string(failed) + " of " + std::to_string(targets_.size()) +
                                                      " targets cannot be planned for; " + quotedPath(target.folder) +
                                                      ": " + target.verdict.message});
        }
    }

    const SessionRequest request_;
    const bool isJson_;
    KvTArchiveContent content_;
    std::string archiveMessages_;
    std::vector<KvTMatrixTarget> targets_;
    KvTVerdict verdict_;
};

} // namespace

bool MatrixCommand::isAvailable() const {
    return canEmulate();
}

void MatrixCommand::addOptions(CommandSyntax& syntax) {
    Command::addOptions(syntax);
    syntax.addCheck([this] {
        if (common.emulatedTargets.empty()) {
            refuse("matrix needs at least one --emulate");
        }
    });
}

ExitCode MatrixCommand::run() {
    return PlanMatrix(request(showUpdatePlan), json.isWanted).planAll();
}
