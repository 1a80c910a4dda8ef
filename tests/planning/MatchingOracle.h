#pragma once

#include "KvNJson.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <string>
#include <vector>

// The rules of matching a second time, worked out on JSON values as plainly as possible: every element is tried with
// every entry, and nothing is prepared.

/// Whether one value of a description, or an item of it, equals the value that stands for an element's property.
[[nodiscard]] bool valueMatches(KvNJson::jsonView archiveValue, const KvNJson::json& elementValue);

/// Whether the entry is meant for the element; `targetPath` receives the path of a file-system entry that is.
[[nodiscard]] bool entryMatches(const KvTUpdateElement& element, const KvTArchiveFile& file, std::string& targetPath);

/// The first entry that is meant for the element, or noArchiveFile.
[[nodiscard]] std::uint32_t firstMatch(const KvTUpdateElement& element, const std::vector<KvTArchiveFile>& files);
