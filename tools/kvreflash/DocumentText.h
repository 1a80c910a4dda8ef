#pragma once

#include "KvNJson.h"

#include <string>

/// A JSON document as the tool writes it, line end included.
[[nodiscard]] inline std::string documentText(const KvNJson::json& document) {
    constexpr int indentation = 4;
    return document.dump(indentation, ' ', false, KvNJson::error_handler_t::replace) + "\n";
}
