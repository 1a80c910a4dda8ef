#pragma once

#include "KvCString.h"
#include "KvCStringConversion.h"
#include "KvTOptions.h"

#include <string>

/// Path of a file in a folder: the folder, a backslash, the file's name.
[[nodiscard]] inline std::wstring pathBelow(const std::wstring& folder, const KvCString& name) {
    return folder + L"\\" + toWide(name);
}

/// Path of the archive description as it is shown: the archive folder, a backslash, the file's name.
[[nodiscard]] inline std::wstring descriptionFilePath(const KvNReflasher::KvTOptions& options) {
    return options.archiveFolder + L"\\" + options.descriptionFileName;
}

/// The same of an update file of the archive.
[[nodiscard]] inline std::wstring updateFilePath(const KvNReflasher::KvTOptions& options, const KvCString& name) {
    return pathBelow(options.archiveFolder, name);
}
