#pragma once

#include "KvIReflasher.h"

#include <string>
#include <vector>

/// The texts of KvIReflasher::getArchiveInfo().
struct KvTArchiveTexts {
    std::wstring name;
    std::wstring version;
    std::wstring productName;
    std::wstring formatVersion;
    std::wstring variant;
};

[[nodiscard]] KvTArchiveTexts archiveTextsOf(KvIReflasher& session);

/// The records of KvIReflasher::getUpdateElements().
[[nodiscard]] std::vector<KvNReflasher::KvTUpdateElementInfo> elementsOf(KvIReflasher& session);

/// The records of KvIReflasher::getArchiveFiles().
[[nodiscard]] std::vector<KvNReflasher::KvTArchiveFileInfo> filesOf(KvIReflasher& session);
