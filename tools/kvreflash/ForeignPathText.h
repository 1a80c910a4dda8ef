#pragma once

#include "KvISession.h"

#include <string>

/// What an update does with a path that leads out of the place that it belongs to, as a sentence without mark.
[[nodiscard]] inline std::string foreignPathText(const KvNReflasher::KvTForeignPath& path) {
    const std::string entry = "file entry " + std::to_string(path.descriptionIndex);
    return path.isRead ? entry + " reads \"" + path.path + "\", which is outside the archive folder"
                       : entry + " writes \"" + path.path + "\", which is outside the target's file system";
}
