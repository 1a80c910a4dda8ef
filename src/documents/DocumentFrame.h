#pragma once

#include "KvNJson.h"
#include "KvTOutcome.h"

#include <string>

namespace KvNReflasher {

/// A document that has its format, the one of this command, and the verdict.
[[nodiscard]] KvNJson::json framedDocument(const std::string& command, const KvTVerdict& verdict);

/// Adds the members that state the verdict.
void setVerdict(KvNJson::json& record, const KvTVerdict& verdict);

/// The document as it is written, line end included.
[[nodiscard]] std::string documentText(const KvNJson::json& document);

} // namespace KvNReflasher
