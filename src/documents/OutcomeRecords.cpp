#include "OutcomeRecords.h"

#include "JsonValues.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>

namespace KvNReflasher {

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
KvCJsonText numberOrNull(Number number) {
    return number != 0 ? KvCJsonText(number) : KvCJsonText();
}

} // namespace

KvCJsonText errorRecord(const KvTErrorInfo& error) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("code", error.code);
    record.set("codeText", hexadecimal(error.code));
    record.set("text", error.text);
    record.set("originNode", error.originNode);
    record.set("seconds", numberOrNull(error.seconds));
    record.set("mainModule", numberOrNull(error.mainModule));
    record.set("subModule", numberOrNull(error.subModule));
    record.set("function", error.function);
    record.set("line", numberOrNull(error.line));
    return record;
}

KvCJsonText errorRecords(const std::vector<KvTErrorInfo>& errors) {
    return listOf(errors, errorRecord);
}

KvCJsonText fileOutcomeRecord(const KvTFileOutcome& file) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("name", file.fileName);
    record.set("fileIndex", file.fileIndex);
    record.set("phase", file.phase);
    record.set("targetPath", file.targetPath);
    record.set("outcome", codeOf(file.result));
    return record;
}

KvCJsonText lookRecord(const KvTLook& look) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("succeeded", look.succeeded);
    record.set("message", look.message);
    record.set("errors", errorRecords(look.errors));
    return record;
}

KvCJsonText verifiedCounts(const KvTVerification& verification) {
    KvCJsonText counts = KvCJsonText::makeObject();
    for (std::size_t index = 0; index < verifiedCount; ++index) {
        const auto result = static_cast<KvEVerified>(index);
        counts.set(codeOf(result), static_cast<std::uint64_t>(verification.count(result)));
    }
    return counts;
}

void setOutcome(KvCJsonText& record, const KvTElementOutcome& outcome) {
    record.set("outcome", codeOf(outcome.result));
    record.set("reason", outcome.reason);
    record.set("failedCall", codeOrNull(outcome.failedCall));
    record.set("state", valueOrNull(outcome.state));
    record.set("message", outcome.message);
    record.set("errors", errorRecords(outcome.errors));
}

void setVerified(KvCJsonText& record, const KvTVerifiedElement* verified) {
    record.set("verification", verified != nullptr ? KvCJsonText(codeOf(verified->result)) : KvCJsonText());
    record.set("leftByPlan", verified != nullptr ? KvCJsonText(verified->leftByPlan) : KvCJsonText());
    record.set("fileChanged", verified != nullptr ? KvCJsonText(verified->fileChanged) : KvCJsonText());
}

} // namespace KvNReflasher
