#include "ArchiveFindingSearch.h"

#include "ArchivePaths.h"
#include "CheckedArchive.h"
#include "DescriptionFile.h"
#include "MessageCapture.h"
#include "ReaderFindings.h"
#include "Warnings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

/// What the description at `path` holds; nothing if it cannot be opened or read.
std::optional<std::string> textOfFile(const std::wstring& path) {
    constexpr std::size_t pieceSize = 65536;
    const FileStream file = openDescription(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    std::string text;
    text.reserve(static_cast<std::size_t>(std::min(sizeOfOpenFile(*file), largestDescription)));
    std::array<char, pieceSize> piece{};
    std::size_t size = piece.size();
    // Somebody may write to the file meanwhile.
    while (size == piece.size() && text.size() <= largestDescription) {
        size = std::fread(piece.data(), 1, piece.size(), file.get());
        text.append(piece.data(), size);
    }
    const bool isWhole = std::ferror(file.get()) == 0 && text.size() <= largestDescription;
    return isWhole ? std::optional(std::move(text)) : std::nullopt;
}

std::vector<KvTOutlinedEntry> entriesOf(const KvCJsonOutline& outline, const KvCReaderFindings& read) {
    std::vector<KvTOutlinedEntry> entries;
    const KvCOutlineValue files = outline.root().find("files");
    for (std::size_t index = 0; files.kind() == KvEJsonKind::array && index < files.size(); ++index) {
        entries.push_back({files.at(index), read.isSkipped(static_cast<std::uint32_t>(index))});
    }
    return entries;
}

} // namespace

std::vector<KvNReflasher::KvTFinding> findingsOfArchive(const KvNReflasher::KvTOptions& options) {
    KvNReflasher::KvTOptions silent = options;
    // In this mode the reader has nothing to say but its findings.
    silent.mode = KvNReflasher::dumpArchiveDescription;
    const std::wstring path = descriptionFilePath(options);
    // Read once: the reader and the outline must see the same text.
    const std::optional<std::string> text = textOfFile(path);
    const KvCMessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), silent);
    KvCReaderFindings read(messages);
    (void)archive.parseDescription(path, text, read);
    (void)archive.completeFromUpdateFiles(read);

    const std::string_view description = text ? std::string_view(*text) : std::string_view();
    const KvCJsonOutline outline(description);
    const std::vector<KvTOutlinedEntry> entries = entriesOf(outline, read);
    const KvTCheckedArchive checked{silent, outline, entries, archive};
    KvCFindingList findings;
    read.addTo(findings, outline, description);
    for (const auto warn : {warnOfKeys, warnOfValues, warnOfNames, warnOfFiles, warnOfShadows}) {
        warn(checked, findings);
    }
    return findings.takeInOrder(description);
}
