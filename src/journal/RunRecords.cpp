#include "RunRecords.h"

#include "Account.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "SavedPlanRecord.h"

#include <string_view>
#include <utility>

namespace KvNReflasher {

namespace {

constexpr std::uint32_t formatVersion = 1;

KvCJsonText recordOf(const std::string& time, const char* event) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("time", time);
    record.set("event", event);
    return record;
}

/// The event with the members of another record behind its own.
std::string joined(const std::string& event, const KvCJsonText& members) {
    constexpr std::string_view end = "}\n";
    std::string line = event.substr(0, event.size() - end.size());
    return line.append(",").append(members.text(), 1).append("\n");
}

KvCJsonText plannedRecord(const KvTPlannedElement& element) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("index", element.index);
    record.set("name", element.displayName);
    record.set("address", element.address);
    record.set("targetPath", element.targetPath);
    return record;
}

KvCJsonText verifiedRecord(const KvTVerifiedElement& verified) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("index", verified.index);
    record.set("result", codeOf(verified.result));
    record.set("after", verified.found ? installedRecord(*verified.found) : KvCJsonText());
    record.set("leftByPlan", verified.leftByPlan);
    record.set("fileChanged", verified.fileChanged);
    return record;
}

} // namespace

std::string beginRecord(const std::string& time, const KvTJournalOptions& options, const KvTSavedPlan& plan) {
    KvCJsonText record = recordOf(time, "begin");
    record.set("format", formatRecord("kvreflash.journal", formatVersion));
    record.set("command", options.command);
    record.set("user", userName());
    record.set("computer", computerName());
    record.set("places", listOf(options.places, textValue));
    record.set("resumes", options.resumes);
    KvCJsonText basis = KvCJsonText::makeObject();
    setPlanBasis(basis, plan);
    record.set("plan", basis);
    return std::move(record).takeLine();
}

std::string planRecord(const std::string& time, const KvTPlan& plan) {
    KvCJsonText record = recordOf(time, "plan");
    setPlanElements(record, plan);
    return std::move(record).takeLine();
}

std::string intentRecord(const std::string& time, std::uint32_t phase, const KvTPlan& plan) {
    KvCJsonText elements = KvCJsonText::makeArray();
    for (const KvTPlannedElement& element : plan.elements) {
        if (element.phase == phase) {
            elements.append(plannedRecord(element));
        }
    }
    KvCJsonText record = recordOf(time, "intent");
    record.set("phase", phase);
    record.set("elements", elements);
    return std::move(record).takeLine();
}

std::string withWrittenFile(const std::string& event, const std::string& targetPath, const std::string& digest) {
    KvCJsonText members = KvCJsonText::makeObject();
    members.set("targetPath", targetPath);
    members.set("sha256", digest.empty() ? KvCJsonText() : textValue(digest));
    return joined(event, members);
}

std::string withVerifiedElements(const std::string& event, const KvTVerification& verification) {
    KvCJsonText members = KvCJsonText::makeObject();
    members.set("lookSucceeded", verification.look.succeeded);
    members.set("elements", listOf(verification.elements, verifiedRecord));
    return joined(event, members);
}

std::string rebootRecord(const std::string& time, bool succeeded) {
    KvCJsonText record = recordOf(time, "reboot");
    record.set("succeeded", succeeded);
    return std::move(record).takeLine();
}

} // namespace KvNReflasher
