#pragma once

#include "KvCString.h"
#include "KvCStringConversion.h"
#include "KvTOptions.h"

#include <string>

/// Path of the archive description: the archive folder, a backslash, the file's name.
[[nodiscard]] inline std::wstring descriptionFilePath(const KvNReflasher::KvTOptions& options) {
    return options.archiveFolder + L"\\" + options.descriptionFileName;
}

/// Path of an update file of the archive: the archive folder, a backslash, the file's name.
[[nodiscard]] inline std::wstring updateFilePath(const KvNReflasher::KvTOptions& options, const KvCString& name) {
    return options.archiveFolder + L"\\" + toWide(name);
}
