#include "ErrorEntries.h"

#include <algorithm>

using KvNReflasher::KvTErrorInfo;

namespace {

std::string textOrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

KvTErrorInfo entryOf(const KvCErrorListPool& list, std::uint32_t index) {
    return {.code = list.getErrorCode(index),
            .text = textOrEmpty(list.getErrorText(index)),
            .originNode = list.getOriginNode(index),
            .seconds = static_cast<double>(list.getTimeStamp(index)) *
                       KvCErrorManager::getInstance()->getTimeStampTickDuration(),
            .mainModule = list.getMainModuleNumber(index),
            .subModule = list.getSubModuleNumber(index),
            .function = textOrEmpty(list.getFunctionName(index)),
            .line = list.getLineNumber(index)};
}

} // namespace

std::vector<KvTErrorInfo> errorEntriesOf(const KvCErrorListPool& list, std::uint32_t begin, std::uint32_t end) {
    std::vector<KvTErrorInfo> entries;
    const std::uint32_t last = std::min(end, list.getNumberOfUsedEntries());
    for (std::uint32_t index = begin; index < last; ++index) {
        entries.push_back(entryOf(list, index));
    }
    return entries;
}
