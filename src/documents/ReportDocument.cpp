#include "ArchiveRecords.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "KvDocuments.h"
#include "OutcomeRecords.h"

#include <cstdint>
#include <vector>

// What a session has planned, what it has done, and what the target reports afterwards.

namespace KvNReflasher {

namespace {

KvCJsonText targetRecord(const KvTReportFacts& facts, const KvTPlan* plan) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("given", facts.target);
    record.set("address", plan != nullptr ? textValue(plan->targetAddress) : KvCJsonText(""));
    return record;
}

void setFacts(KvCJsonText& document, const KvTReportFacts& facts, const KvTPlan* plan) {
    document.set("toolVersion", facts.toolVersion);
    document.set("begin", facts.begin);
    document.set("end", facts.end.empty() ? KvCJsonText() : KvCJsonText(std::string_view(facts.end)));
    document.set("exitCode", static_cast<std::uint32_t>(facts.exitCode));
    document.set("target", targetRecord(facts, plan));
    document.set("archiveFolder", facts.archiveFolder);
}

/// The records of a session's elements.
class ElementReports {
public:
    explicit ElementReports(const KvTSessionRecord& session) : session_(session) {
        if (session_.plan != nullptr && session_.verification != nullptr) {
            verified_.resize(session_.plan->elements.size());
            for (const KvTVerifiedElement& element : session_.verification->elements) {
                verified_.at(element.index) = &element;
            }
        }
    }

    [[nodiscard]] KvCJsonText operator()(const KvTPlannedElement& element) const {
        KvCJsonText record = plannedElementRecord(element);
        if (session_.outcome != nullptr && element.index < session_.outcome->elements.size()) {
            setOutcome(record, session_.outcome->elements[element.index]);
        }
        record.set("after", after(element));
        setVerified(record, element.index < verified_.size() ? verified_[element.index] : nullptr);
        return record;
    }

private:
    /// What the look has found; null if the target was not looked at or does not list the element.
    [[nodiscard]] KvCJsonText after(const KvTPlannedElement& element) const {
        if (session_.verification == nullptr) {
            return {};
        }
        const auto& found = session_.verification->look.elements;
        const bool isFound = element.index < found.size() && found[element.index];
        return isFound ? installedRecord(*found[element.index]) : KvCJsonText();
    }

    const KvTSessionRecord& session_;
    /// By the index of the element.
    std::vector<const KvTVerifiedElement*> verified_;
};

void setPlanMembers(KvCJsonText& document, const KvTSessionRecord& session) {
    const KvTPlan& plan = *session.plan;
    document.set("archive", plan.archive ? identityRecord(*plan.archive) : KvCJsonText());
    document.set("release", releaseRecord(plan.release));
    document.set("targetAddress", plan.targetAddress);
    document.set("supported", plan.supported);
    document.set("unsupportedElements",
                 listOf(plan.unsupportedElements, [](std::uint32_t index) { return KvCJsonText(index); }));
    document.set("phaseCount", plan.phaseCount);
    document.set("elements", listOf(plan.elements, ElementReports(session)));
}

void setOutcomeMembers(KvCJsonText& document, const KvTOutcome& outcome) {
    document.set("stage", codeOf(outcome.stage));
    document.set("fileOutcomes", listOf(outcome.files, fileOutcomeRecord));
    document.set("errors", errorRecords(outcome.errors));
}

} // namespace

std::string reportDocument(const KvTSessionRecord& session, const KvTReportFacts& facts) {
    KvCJsonText document = framedDocument(facts.command, session.verdict);
    setFacts(document, facts, session.plan);
    document.set("files",
                 session.entries != nullptr ? listOf(*session.entries, entryRecord) : KvCJsonText::makeArray());
    if (session.plan != nullptr) {
        setPlanMembers(document, session);
    }
    if (session.outcome != nullptr) {
        setOutcomeMembers(document, *session.outcome);
    }
    const KvTVerification* verification = session.verification;
    document.set("verificationCounts", verification != nullptr ? verifiedCounts(*verification) : KvCJsonText());
    document.set("look", verification != nullptr ? lookRecord(verification->look) : KvCJsonText());
    document.set("messages", facts.messages);
    return documentText(document);
}

} // namespace KvNReflasher
