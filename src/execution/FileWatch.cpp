#include "FileWatch.h"

#include "ExhaustedMemory.h"
#include "Files.h"

#include <cstdio>
#include <vector>

void KvCFileWatch::note(std::uint32_t fileIndex) {
    if (!noted_.contains(fileIndex)) {
        noted_[fileIndex] = digestOf(fileIndex);
    }
}

bool KvCFileWatch::hasChanged(std::uint32_t fileIndex) const {
    const auto noted = noted_.find(fileIndex);
    return noted != noted_.end() && withoutException(true, [&] { return noted->second != digestOf(fileIndex); });
}

/// Nothing if the file cannot be read to its end.
std::optional<KvTSha256> KvCFileWatch::digestOf(std::uint32_t fileIndex) const {
    const FileStream stream = openForReading(archive_.pathOf(archive_.files()[fileIndex].name));
    if (stream == nullptr) {
        return std::nullopt;
    }
    constexpr std::size_t pieceSize = std::size_t{64} << 10U;
    std::vector<std::uint8_t> piece(pieceSize);
    KvCSha256 digest;
    std::size_t length = piece.size();
    while (length == piece.size()) {
        length = std::fread(piece.data(), 1, piece.size(), stream.get());
        digest.add(KvTBytes(piece).first(length));
    }
    return std::ferror(stream.get()) == 0 ? std::optional(digest.digest()) : std::nullopt;
}
