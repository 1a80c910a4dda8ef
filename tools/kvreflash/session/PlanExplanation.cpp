#include "PlanExplanation.h"

#include "Conclusion.h"
#include "ErrorText.h"
#include "ExplanationText.h"
#include "KvDocuments.h"
#include "Remarks.h"
#include "ToolOutput.h"
#include "ToolSession.h"

#include <cstdio>
#include <limits>
#include <vector>

using namespace KvNReflasher;

namespace {

/// True if `text`, the number or name of an element or empty for all, means this one.
bool isMeant(const KvTPlannedElement& element, const std::string& text) {
    return text.empty() || text == std::to_string(element.index) || element.name == text || element.displayName == text;
}

/// The one session of an explanation.
class PlanExplanation {
public:
    explicit PlanExplanation(const KvTCommandLine& line) : line_(line), session_(line) {}

    [[nodiscard]] ExitCode perform() {
        session_.keepMessages();
        session_->findHiddenElements();
        const bool isPrepared = session_.prepare();
        writeText(line_.json || !isPrepared ? stderr : stdout, session_.messages());
        if (isPrepared) {
            explain();
        }
        verdict_.add(session_.verdict());
        if (line_.json) {
            const KvTPlan* plan = session_->plan();
            writeText(stdout, explainDocument(plan, explanations_, session_->hiddenElements(), verdict_));
        }
        return conclude(verdict_);
    }

private:
    void explain() {
        const std::size_t limit = line_.element.empty() ? fewEntries : std::numeric_limits<std::size_t>::max();
        verdict_.add(verdictOfFilters(*session_->plan(), line_.options));
        for (const KvTPlannedElement& element : session_->plan()->elements) {
            if (!isMeant(element, line_.element)) {
                continue;
            }
            explanations_.push_back(session_->explain(element.index));
            if (!line_.json) {
                writeText(stdout, explanationText(element, explanations_.back(), limit));
            }
        }
        if (explanations_.empty() && !line_.element.empty()) {
            verdict_.add(
                {KvEFailure::selection, "the target has no element '" + line_.element + "', or a filter hides it"});
        } else if (!line_.json && line_.element.empty()) {
            writeText(stdout, hiddenElementsText(session_->hiddenElements()));
        }
        const std::vector<KvTErrorInfo> errors = session_->outcome().errors;
        for (const KvTErrorInfo& error : errors) {
            say(errorText(error));
        }
        if (!errors.empty()) {
            verdict_.add({KvEFailure::errors, "errors were reported, so that the explanation may be incomplete"});
        }
    }

    const KvTCommandLine& line_;
    ToolSession session_;
    std::vector<KvTExplanation> explanations_;
    KvTVerdict verdict_;
};

} // namespace

ExitCode explainPlan(const KvTCommandLine& line) {
    return PlanExplanation(line).perform();
}
