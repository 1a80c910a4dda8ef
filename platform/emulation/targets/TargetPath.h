#pragma once

#include "Outcome.h"

#include <string>
#include <string_view>
#include <vector>

/// The components of a path on the target; empty ones and "." are left out.
[[nodiscard]] std::vector<std::string> splitComponents(std::string_view path);
/// The components joined by "/".
[[nodiscard]] std::string joinComponents(const std::vector<std::string>& components);

/// The components of a folder or file below the target's file system root /mnt/cn/cfdrive. A path elsewhere is refused,
/// and on every system a component that some system could take for something else: "..", or one that holds "\", ":" or
/// a control character.
[[nodiscard]] OrFailure<std::vector<std::string>> resolveTargetPath(std::string_view path);
/// Refuses a name that is no single component of that kind.
[[nodiscard]] Outcome checkTargetName(std::string_view name);
