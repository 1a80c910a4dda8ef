#pragma once

#include "ArchiveFindings.h"
#include "KvNJson.h"
#include "KvTArchiveFile.h"

/// Holds the "info" block of the description `root` against its rules and stores each field in `info` as it passes.
/// False: do not go on.
[[nodiscard]] bool readInfo(KvCArchiveFindings& findings, KvNJson::jsonView root, KvTArchiveInfo& info);
