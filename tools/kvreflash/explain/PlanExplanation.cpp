#include "PlanExplanation.h"

#include "Explanation.h"
#include "ExplanationDocument.h"
#include "ExplanationText.h"
#include "HiddenElements.h"
#include "PlannedTarget.h"
#include "ToolOutput.h"

#include <cstdio>
#include <limits>

namespace {

/// True when `text`, the number or name of an element or empty for all, means this one.
bool isMeant(const KvTUpdateElement& element, const std::string& text) {
    return text.empty() || text == std::to_string(element.index) || element.name == text || element.displayName == text;
}

void printExplanations(const std::vector<KvTExplanation>& explanations, const std::vector<KvTArchiveFile>& files,
                       const KvTCommandLine& line) {
    if (line.json) {
        writeText(stdout, explanationDocument(explanations, files, hiddenElements(line.options)));
        return;
    }
    const std::size_t limit = line.element.empty() ? fewEntries : std::numeric_limits<std::size_t>::max();
    for (const KvTExplanation& explanation : explanations) {
        writeText(stdout, explanationText(explanation, files, limit));
    }
    if (line.element.empty()) {
        writeText(stdout, hiddenElementsText(hiddenElements(line.options)));
    }
}

} // namespace

ExitCode explainPlan(const KvTCommandLine& line) {
    PlannedTarget target(line.options);
    const bool isPlanned = target.plan();
    const bool hasErrors = target.reportErrors();
    writeText(line.json || !isPlanned ? stderr : stdout, target.messages());
    if (!isPlanned) {
        return exitFailed;
    }
    const Explainer explainer(target.preparation(), line.options);
    std::vector<KvTExplanation> explanations;
    for (const KvTUpdateElement& element : target.preparation().inventory().elements()) {
        if (isMeant(element, line.element)) {
            explanations.push_back(explainer.explain(element));
        }
    }
    if (explanations.empty() && !line.element.empty()) {
        say("the target has no element '" + line.element + "', or a filter hides it");
        return exitFailed;
    }
    printExplanations(explanations, target.preparation().archive().files(), line);
    return hasErrors ? exitFailed : exitSuccess;
}
