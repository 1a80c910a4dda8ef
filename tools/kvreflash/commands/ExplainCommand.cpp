#include "ExplainCommand.h"

#include "ExplanationText.h"
#include "KvDocuments.h"
#include "Selection.h"
#include "ToolOutput.h"
#include "ValueTexts.h"

#include <limits>

using namespace KvNReflasher;

namespace {

/// True if `text`, the number or name of an element or empty for all, means this one.
bool isMeant(const KvTPlannedElement& element, const std::string& text) {
    return text.empty() || text == std::to_string(element.index) || element.name == text || element.displayName == text;
}

/// The one session of an explanation.
class PlanExplanation {
public:
    PlanExplanation(const SessionRequest& request, const std::string& element, bool isJson)
        : session_(request), element_(element), isJson_(isJson) {}

    [[nodiscard]] ExitCode explainAll() {
        session_.keepMessages();
        session_->findHiddenElements();
        const bool isPrepared = session_.prepare();
        session_.remarkOnRelease();
        writeText(isJson_ || !isPrepared ? stderr : stdout, session_.messages());
        if (isPrepared) {
            explain();
        }
        verdict_.add(session_.verdict());
        if (isJson_) {
            const KvTPlan* plan = session_->plan();
            writeText(stdout, explainDocument(plan, explanations_, session_->hiddenElements(), verdict_));
        }
        return conclude(verdict_);
    }

private:
    void explain() {
        const std::size_t limit = element_.empty() ? fewEntries : std::numeric_limits<std::size_t>::max();
        verdict_.add(session_.select());
        for (const KvTPlannedElement& element : session_->plan()->elements) {
            if (!isMeant(element, element_)) {
                continue;
            }
            explanations_.push_back(session_->explain(element.index));
            if (!isJson_) {
                writeText(stdout, explanationText(element, explanations_.back(), limit));
            }
        }
        if (explanations_.empty() && !element_.empty()) {
            verdict_.add({KvEFailure::selection, "the target has no element '" + element_ + "', or a filter hides it" +
                                                     suggestionFor(element_, knownNames())});
        } else if (!isJson_ && element_.empty()) {
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

    [[nodiscard]] std::vector<std::string> knownNames() const {
        std::vector<std::string> names;
        for (const KvTPlannedElement& element : session_->plan()->elements) {
            names.push_back(element.displayName);
            names.push_back(element.name);
        }
        return names;
    }

    ToolSession session_;
    const std::string& element_;
    const bool isJson_;
    std::vector<KvTExplanation> explanations_;
    KvTVerdict verdict_;
};

} // namespace

void ElementArgument::addTo(CommandSyntax& syntax) {
    syntax.addArgument("ELEMENT", "Number (No. of the plan) or name of one element (default: all)", keptIn(element));
}

ExitCode ExplainCommand::run() {
    return PlanExplanation(request(showUpdatePlan), argument.element, json.isWanted).explainAll();
}
