#include "OutcomeRecords.h"

#include "JsonValues.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

namespace KvNReflasher {

using KvNJson::json;

namespace {

/// The code as error reports print it, such as "0x2004".
std::string hexadecimal(std::uint32_t code) {
    constexpr int base = 16;
    std::array<char, 8> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), code, base).ptr;
    std::string text = "0x";
    return text.append(digits.data(), end);
}

/// Null for 0, which stands for what is not known.
template <typename Number>
json numberOrNull(Number number) {
    return number != 0 ? json(number) : json();
}

} // namespace

json errorRecord(const KvTErrorInfo& error) {
    json record = json::makeObject();
    record.set("code", error.code);
    record.set("codeText", textValue(hexadecimal(error.code)));
    record.set("text", textValue(error.text));
    record.set("originNode", error.originNode);
    record.set("seconds", numberOrNull(error.seconds));
    record.set("mainModule", numberOrNull(error.mainModule));
    record.set("subModule", numberOrNull(error.subModule));
    record.set("function", textValue(error.function));
    record.set("line", numberOrNull(error.line));
    return record;
}

json errorRecords(const std::vector<KvTErrorInfo>& errors) {
    return listOf(errors, errorRecord);
}

json fileOutcomeRecord(const KvTFileOutcome& file) {
    json record = json::makeObject();
    record.set("name", textValue(file.fileName));
    record.set("fileIndex", file.fileIndex);
    record.set("phase", file.phase);
    record.set("targetPath", textValue(file.targetPath));
    record.set("outcome", codeOf(file.result));
    return record;
}

json lookRecord(const KvTLook& look) {
    json record = json::makeObject();
    record.set("succeeded", look.succeeded);
    record.set("message", textValue(look.message));
    record.set("errors", errorRecords(look.errors));
    return record;
}

json verifiedCounts(const KvTVerification& verification) {
    json counts = json::makeObject();
    for (std::size_t index = 0; index < verifiedCount; ++index) {
        const auto result = static_cast<KvEVerified>(index);
        counts.set(codeOf(result), static_cast<std::uint64_t>(verification.count(result)));
    }
    return counts;
}

void setOutcome(json& record, const KvTElementOutcome& outcome) {
    record.set("outcome", codeOf(outcome.result));
    record.set("reason", textValue(outcome.reason));
    record.set("failedCall", codeOrNull(outcome.failedCall));
    record.set("state", valueOrNull(outcome.state));
    record.set("message", textValue(outcome.message));
    record.set("errors", errorRecords(outcome.errors));
}

void setVerified(json& record, const KvTVerifiedElement* verified) {
    record.set("verification", verified != nullptr ? json(codeOf(verified->result)) : json());
    record.set("leftByPlan", verified != nullptr ? json(verified->leftByPlan) : json());
    record.set("fileChanged", verified != nullptr ? json(verified->fileChanged) : json());
}

} // namespace KvNReflasher
