#pragma once

#include "KvNJson.h"
#include "KvTOutcome.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace KvNReflasher {

/// The record that states the format of a document.
[[nodiscard]] KvNJson::json formatRecord(std::string_view name, std::uint32_t version);

/// A document that has its format, the one of this command, and the verdict.
[[nodiscard]] KvNJson::json framedDocument(const std::string& command, const KvTVerdict& verdict);

/// Adds the members that state the verdict.
void setVerdict(KvNJson::json& record, const KvTVerdict& verdict);

/// The document as it is written, line end included.
[[nodiscard]] std::string documentText(const KvNJson::json& document);

} // namespace KvNReflasher
