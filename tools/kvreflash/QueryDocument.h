#pragma once

#include "KvIReflasher.h"

#include <string>

/// The query records of a session as a JSON document, as far as its mode has them.
[[nodiscard]] std::string queryDocument(KvIReflasher& session, std::uint32_t mode);
