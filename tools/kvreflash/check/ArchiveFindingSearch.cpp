#include "ArchiveFindingSearch.h"

#include "CheckedArchive.h"
#include "FileWarnings.h"
#include "Files.h"
#include "KeyWarnings.h"
#include "MessageCapture.h"
#include "NameWarnings.h"
#include "ReaderFindings.h"
#include "ShadowWarnings.h"
#include "ValueWarnings.h"

#include <array>
#include <cstdio>
#include <string>

namespace {

/// What the file at `path` holds; empty when it cannot be read.
std::string textOfFile(const std::wstring& path) {
    constexpr std::size_t pieceSize = 65536;
    const FileStream file = openForReading(path);
    std::string text;
    std::array<char, pieceSize> piece{};
    std::size_t size = piece.size();
    while (file != nullptr && size == piece.size()) {
        size = std::fread(piece.data(), 1, piece.size(), file.get());
        text.append(piece.data(), size);
    }
    return file != nullptr && std::ferror(file.get()) == 0 ? text : std::string();
}

std::vector<KvTOutlinedEntry> entriesOf(const JsonOutline& outline, const ReaderFindings& read) {
    std::vector<KvTOutlinedEntry> entries;
    const OutlineValue files = outline.root().find("files");
    for (std::size_t index = 0; files.kind() == KvEJsonKind::array && index < files.size(); ++index) {
        entries.push_back({files.at(index), read.isSkipped(static_cast<std::uint32_t>(index))});
    }
    return entries;
}

} // namespace

std::vector<KvTFinding> findingsOfArchive(const KvNReflasher::KvTOptions& options) {
    KvNReflasher::KvTOptions silent = options;
    // In this mode the reader has nothing to say but its findings.
    silent.mode = KvNReflasher::dumpArchiveDescription;
    const std::wstring path = options.archiveFolder + L"\\" + options.descriptionFileName;
    const MessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), silent);
    ReaderFindings read(messages);
    (void)archive.parseDescription(path, read);
    (void)archive.completeFromUpdateFiles(read);

    const std::string text = textOfFile(path);
    const JsonOutline outline(text);
    const std::vector<KvTOutlinedEntry> entries = entriesOf(outline, read);
    const KvTCheckedArchive checked{silent, outline, entries, archive};
    FindingList findings;
    read.addTo(findings, outline, text);
    for (const auto warn : {warnOfKeys, warnOfValues, warnOfNames, warnOfFiles, warnOfShadows}) {
        warn(checked, findings);
    }
    return findings.takeInOrder(text);
}
