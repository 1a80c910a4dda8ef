#include "ArchiveFindingSearch.h"

#include "ArchivePaths.h"
#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"
#include "ReaderFindings.h"
#include "Warnings.h"
#include "WholeFiles.h"

#include <string_view>

namespace {

std::vector<KvTOutlinedEntry> entriesOf(const KvCJsonOutline& outline, const KvCReaderFindings& read) {
    std::vector<KvTOutlinedEntry> entries;
    const KvCOutlineValue files = outline.root().find("files");
    for (std::size_t index = 0; files.kind() == KvEJsonKind::array && index < files.size(); ++index) {
        entries.push_back({files.at(index), read.isSkipped(static_cast<std::uint32_t>(index))});
    }
    return entries;
}

/// Entries that are refused or skipped name files, too.
std::vector<std::string_view> namesOf(const std::vector<KvTOutlinedEntry>& entries) {
    std::vector<std::string_view> names;
    names.reserve(entries.size());
    for (const KvTOutlinedEntry& entry : entries) {
        names.push_back(entry.value.find("name").text());
    }
    return names;
}

} // namespace

std::vector<KvNReflasher::KvTFinding> findingsOfArchive(const KvNReflasher::KvTOptions& options) {
    // Read once: the reader and the outline must see the same text.
    return findingsOfText(options, textOfFile(descriptionFilePath(options), largestDescription));
}

std::vector<KvNReflasher::KvTFinding> findingsOfText(const KvNReflasher::KvTOptions& options,
                                                     const std::optional<std::string>& text,
                                                     const KvTArchiveCopy& copy) {
    KvNReflasher::KvTOptions silent = options;
    // In this mode the reader has nothing to say but its findings.
    silent.mode = KvNReflasher::dumpArchiveDescription;
    const KvCMessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), silent);
    archive.readFrom(copy);
    KvCReaderFindings read(messages);
    (void)archive.parseDescription(archive.descriptionPath(), text, read);
    (void)archive.completeFromUpdateFiles(read);

    const std::string_view description = text ? std::string_view(*text) : std::string_view();
    const KvCJsonOutline outline(description);
    const std::vector<KvTOutlinedEntry> entries = entriesOf(outline, read);
    KvCFolderFiles files(archive, options.descriptionFileName, namesOf(entries));
    const KvTCheckedArchive checked{outline, entries, archive, files};
    KvCFindingList findings;
    read.addTo(findings, outline, description, files);
    for (const auto warn :
         {warnOfKeys, warnOfValues, warnOfNames, warnOfTexts, warnOfGaps, warnOfFiles, warnOfShadows}) {
        warn(checked, findings);
    }
    return findings.takeInOrder(description);
}
