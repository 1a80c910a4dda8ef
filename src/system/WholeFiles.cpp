#include "WholeFiles.h"

#include "Files.h"

#include <array>
#include <utility>

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
