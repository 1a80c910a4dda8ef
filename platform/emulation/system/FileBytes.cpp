#include "FileBytes.h"

#include <utility>
#include <vector>

bool forEachPiece(std::FILE* file, const ByteSink& sink) {
    constexpr std::size_t pieceSize = std::size_t(64) << 10U;
    std::vector<char> piece(pieceSize);
    for (;;) {
        const std::size_t size = std::fread(piece.data(), 1, piece.size(), file);
        if (size > 0 && !sink({piece.data(), size})) {
            return false;
        }
        if (size < piece.size()) {
            return std::ferror(file) == 0;
        }
    }
}

std::optional<std::string> readBytes(std::FILE& file, std::size_t limit, std::size_t expected) {
    std::string bytes;
    bytes.reserve(expected);
    const bool isRead = forEachPiece(&file, [&](std::string_view piece) {
        bytes += piece;
        return bytes.size() <= limit;
    });
    return isRead ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<std::uint64_t> copyBytes(std::FILE& from, std::FILE& to, const CopyProgress& progress) {
    std::uint64_t done = 0;
    const bool isCopied = forEachPiece(&from, [&](std::string_view piece) {
        if (std::fwrite(piece.data(), 1, piece.size(), &to) != piece.size()) {
            return false;
        }
        done += piece.size();
        if (progress) {
            progress(done);
        }
        return true;
    });
    return isCopied && std::fflush(&to) == 0 ? std::optional(done) : std::nullopt;
}
