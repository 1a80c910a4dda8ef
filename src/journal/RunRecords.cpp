#include "RunRecords.h"

#include "Account.h"
#include "DocumentFrame.h"
#include "ElementRecords.h"
#include "JsonValues.h"
#include "SavedPlanRecord.h"

#include <string_view>

namespace KvNReflasher {

using KvNJson::json;

namespace {

constexpr std::uint32_t formatVersion = 1;

json recordOf(const std::string& time, const char* event) {
    json record = json::makeObject();
    record.set("time", textValue(time));
    record.set("event", event);
    return record;
}

std::string lineOf(const json& record) {
    return record.dump(-1, ' ', false, KvNJson::error_handler_t::replace) + "\n";
}

/// The event with the members of another record behind its own.
std::string joined(const std::string& event, const json& members) {
    constexpr std::string_view end = "}\n";
    std::string line = event.substr(0, event.size() - end.size());
    return line.append(",").append(lineOf(members).substr(1));
}

json plannedRecord(const KvTPlannedElement& element) {
    json record = json::makeObject();
    record.set("index", element.index);
    record.set("name", textValue(element.displayName));
    record.set("address", textValue(element.address));
    record.set("targetPath", textValue(element.targetPath));
    return record;
}

json verifiedRecord(const KvTVerifiedElement& verified) {
    json record = json::makeObject();
    record.set("index", verified.index);
    record.set("result", codeOf(verified.result));
    record.set("after", verified.found ? installedRecord(*verified.found) : json());
    record.set("leftByPlan", verified.leftByPlan);
    record.set("fileChanged", verified.fileChanged);
    return record;
}

} // namespace

std::string beginRecord(const std::string& time, const KvTJournalOptions& options, const KvTSavedPlan& plan) {
    json record = recordOf(time, "begin");
    record.set("format", formatRecord("kvreflash.journal", formatVersion));
    record.set("command", textValue(options.command));
    record.set("user", textValue(userName()));
    record.set("computer", textValue(computerName()));
    record.set("places", listOf(options.places, textValue));
    record.set("resumes", textValue(options.resumes));
    json basis = json::makeObject();
    setPlanBasis(basis, plan);
    record.set("plan", std::move(basis));
    return lineOf(record);
}

std::string planRecord(const std::string& time, const KvTSavedPlan& plan) {
    json record = recordOf(time, "plan");
    setPlanElements(record, plan);
    return lineOf(record);
}

std::string intentRecord(const std::string& time, std::uint32_t phase, const KvTPlan& plan) {
    json elements = json::makeArray();
    for (const KvTPlannedElement& element : plan.elements) {
        if (element.phase == phase) {
            elements.append(plannedRecord(element));
        }
    }
    json record = recordOf(time, "intent");
    record.set("phase", phase);
    record.set("elements", std::move(elements));
    return lineOf(record);
}

std::string withWrittenFile(const std::string& event, const std::string& targetPath, const std::string& digest) {
    json members = json::makeObject();
    members.set("targetPath", textValue(targetPath));
    members.set("sha256", digest.empty() ? json() : textValue(digest));
    return joined(event, members);
}

std::string withVerifiedElements(const std::string& event, const KvTVerification& verification) {
    json members = json::makeObject();
    members.set("lookSucceeded", verification.look.succeeded);
    members.set("elements", listOf(verification.elements, verifiedRecord));
    return joined(event, members);
}

std::string rebootRecord(const std::string& time, bool succeeded) {
    json record = recordOf(time, "reboot");
    record.set("succeeded", succeeded);
    return lineOf(record);
}

} // namespace KvNReflasher
