#include "DocumentFrame.h"

#include "JsonValues.h"

namespace KvNReflasher {

using KvNJson::json;

namespace {

/// Of all formats; a greater one if members change or go, not if some are added.
constexpr std::uint32_t formatVersion = 1;

} // namespace

json formatRecord(std::string_view name, std::uint32_t version) {
    json format = json::makeObject();
    format.set("name", name);
    format.set("version", version);
    return format;
}

json framedDocument(const std::string& command, const KvTVerdict& verdict) {
    json document = json::makeObject();
    document.set("format", formatRecord("kvreflash." + command, formatVersion));
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
