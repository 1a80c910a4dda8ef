#pragma once

#include "KvNJson.h"

#include <string>
#include <string_view>

/// The JSON value of `text`. When it is none, is_invalid() is true and `reason` tells the line, the column (in
/// characters, from 1) and what is wrong there.
[[nodiscard]] KvNJson::json parseDocument(std::string_view text, std::string& reason);
