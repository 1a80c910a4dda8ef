#pragma once

#include "JsonText.h"
#include "KvTOutcome.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace KvNReflasher {

/// The record that states the format of a document.
[[nodiscard]] KvCJsonText formatRecord(std::string_view name, std::uint32_t version);

/// A document that has its format, the one of this command, and the verdict.
[[nodiscard]] KvCJsonText framedDocument(const std::string& command, const KvTVerdict& verdict);

/// Adds the members that state the verdict.
void setVerdict(KvCJsonText& record, const KvTVerdict& verdict);

/// The document as it is written, line end included.
[[nodiscard]] std::string documentText(const KvCJsonText& document);

} // namespace KvNReflasher
