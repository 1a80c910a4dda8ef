#pragma once

#include "KvNJson.h"
#include "ScratchFile.h"

#include <string>
#include <string_view>

/// `text` as it is read from a file.
inline KvNJson::json parseFile(std::string_view text) {
    const ScratchFile file(text);
    const ScratchFile::Stream stream = file.open("rb");
    return KvNJson::json::parse(stream.get());
}

/// The text after one reading and writing on one line; "(invalid)" when it cannot be read.
inline std::string normalised(std::string_view text) {
    const KvNJson::json document = KvNJson::json::parse(text);
    return document.is_invalid() ? "(invalid)" : document.dump();
}

/// One text; operator+ on a literal and a temporary string trips a compiler warning that is mistaken.
template <class... Parts>
std::string joined(const Parts&... parts) {
    std::string result;
    (result.append(parts), ...);
    return result;
}

/// A text and what is expected of it.
struct TextPair {
    std::string_view text;
    std::string_view expected;
};
