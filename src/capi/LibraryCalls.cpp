#include "ExhaustedMemory.h"
#include "KvDocuments.h"
#include "KvISession.h"
#include "KvRunDocuments.h"
#include "kvreflash.h"

#include <cstdint>
#include <string>

using namespace KvNReflasher;

namespace {

/// The word of a value up to the last one of its enumeration.
template <typename Enumeration>
const char* wordOf(std::uint32_t value, Enumeration last) {
    return value <= static_cast<std::uint32_t>(last) ? codeOf(static_cast<Enumeration>(value)) : "";
}

} // namespace

const char* KVR_CALL kvr_code(std::uint32_t enumeration, std::uint32_t value) {
    switch (enumeration) {
    case KVR_CODE_FAILURE:
        return wordOf(value, KvEFailure::none);
    case KVR_CODE_STAGE:
        return wordOf(value, KvEStage::rebooted);
    case KVR_CODE_REASON:
        return wordOf(value, KvEReason::inDoubt);
    case KVR_CODE_RESULT:
        return wordOf(value, KvEResult::inProgress);
    case KVR_CODE_VERIFIED:
        return wordOf(value, KvEVerified::differs);
    case KVR_CODE_FAILED_CALL:
        return wordOf(value, KvEFailedCall::writeFile);
    case KVR_CODE_SEVERITY:
        return wordOf(value, KvESeverity::warning);
    case KVR_CODE_SEAL:
        return wordOf(value, KvESeal::trusted);
    case KVR_CODE_CHANGE:
        return wordOf(value, KvEChange::changed);
    case KVR_CODE_RUN_STATE:
        return wordOf(value, KvERunState::brokenOff);
    default:
        return "";
    }
}

std::uint32_t KVR_CALL kvr_exit_code(std::uint32_t failure) {
    const bool isKnown = failure <= static_cast<std::uint32_t>(KvEFailure::none);
    return isKnown ? static_cast<std::uint32_t>(exitCodeOf(static_cast<KvEFailure>(failure))) : 1;
}

std::uint32_t KVR_CALL kvr_abi_version(void) {
    return KVR_ABI_VERSION;
}

const char* KVR_CALL kvr_version(void) {
    return withoutException<const char*>("", [] {
        static const std::string text = KvISession::version();
        return text.c_str();
    });
}
