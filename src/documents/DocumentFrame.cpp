#include "DocumentFrame.h"

#include "JsonValues.h"

#include <cstdint>
#include <utility>

namespace KvNReflasher {

using KvNJson::json;

namespace {

/// Of all formats; a greater one if members change or go, not if some are added.
constexpr std::uint32_t formatVersion = 1;

} // namespace

json framedDocument(const std::string& command, const KvTVerdict& verdict) {
    json format = json::makeObject();
    format.set("name", textValue("kvreflash." + command));
    format.set("version", formatVersion);
    json document = json::makeObject();
    document.set("format", std::move(format));
    setVerdict(document, verdict);
    return document;
}

void setVerdict(json& record, const KvTVerdict& verdict) {
    record.set("failure", codeOrNull(verdict.failure));
    record.set("retryable", verdict.isRetryable());
    record.set("message", textValue(verdict.message));
}

std::string documentText(const json& document) {
    constexpr int indentation = 4;
    return document.dump(indentation, ' ', false, KvNJson::error_handler_t::replace) + "\n";
}

} // namespace KvNReflasher
