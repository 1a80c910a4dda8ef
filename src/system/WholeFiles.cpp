#include "WholeFiles.h"

#include "Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

std::optional<std::string> textOfFile(const std::wstring& path, std::uint64_t most) {
    constexpr std::size_t pieceSize = 65536;
    const FileStream file = openForReading(path);
    if (file == nullptr || sizeOfOpenFile(*file) > most) {
        return std::nullopt;
    }
    std::string text;
    // Somebody may write to the file meanwhile.
    std::array<char, pieceSize> piece{};
    std::size_t size = piece.size();
    while (size == piece.size() && text.size() <= most) {
        size = std::fread(piece.data(), 1, piece.size(), file.get());
        text.append(piece.data(), size);
    }
    const bool isRead = std::ferror(file.get()) == 0 && text.size() <= most;
    return isRead ? std::optional(std::move(text)) : std::nullopt;
}

bool readInPieces(const std::wstring& path, const KvTPieceSink& sink) {
    // Of a short file that is all, and it takes fewer calls of the system than a stream.
    constexpr std::size_t beginningSize = 4096;
    std::array<std::uint8_t, beginningSize> beginning{};
    const std::optional<std::size_t> size = readBeginning(path, beginning);
    if (!size) {
        return false;
    }
    if (*size < beginning.size()) {
        return *size == 0 || sink(std::span<const std::uint8_t>(beginning).first(*size));
    }
    const FileStream stream = openForReading(path);
    if (stream == nullptr) {
        return false;
    }
    (void)std::setvbuf(stream.get(), nullptr, _IONBF, 0); // the pieces are buffer enough
    constexpr std::uint64_t largestPiece = std::uint64_t{256} << 10U;
    // One byte more than the file has shows its end at once.
    std::vector<std::uint8_t> piece(static_cast<std::size_t>(std::min(sizeOfOpenFile(*stream) + 1, largestPiece)));
    std::size_t length = piece.size();
    while (length == piece.size()) {
        length = std::fread(piece.data(), 1, piece.size(), stream.get());
        if (length > 0 && !sink(std::span<const std::uint8_t>(piece).first(length))) {
            return false;
        }
    }
    return std::ferror(stream.get()) == 0;
}
