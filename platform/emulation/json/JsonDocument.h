#pragma once

#include "JsonPlace.h"
#include "KvNJson.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

/// Size in bytes of the largest document that is read from a file.
inline constexpr std::uint64_t largestDocument = std::uint64_t{256} << 20U;

/// False with `reason`, such as "is larger than 256 MiB", when `file` is larger than that. Nothing is read.
[[nodiscard]] bool fitsDocument(std::FILE& file, std::string& reason);

/// The JSON value of `text`. When it is none, is_invalid() is true and `reason` tells the line, the column (in
/// characters, from 1) and what is wrong there.
[[nodiscard]] KvNJson::json parseDocument(std::string_view text, std::string& reason);

/// Reads the members of the JSON object that `text` is. False when it is refused: then `reason` is "JSON PATH: what was
/// expected", or as parseDocument() gives it. A large text does not stay in memory beside what is made of it.
template <class Record, std::size_t count>
[[nodiscard]] bool readDocument(std::string text, const std::array<JsonMemberRule<Record>, count>& rules,
                                Record& record, std::string& reason) {
    const KvNJson::json document = parseDocument(text, reason);
    std::string().swap(text);
    if (document.is_invalid()) {
        return false;
    }
    JsonRefusal refusal;
    if (!readMembers(JsonPlace(document.view(), refusal), rules, record)) {
        reason = refusal.path + ": " + refusal.reason;
        return false;
    }
    return true;
}
