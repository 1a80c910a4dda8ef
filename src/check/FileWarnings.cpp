#include "Warnings.h"

#include "DescriptionFile.h"
#include "Files.h"
#include "ForeignPaths.h"
#include "HeaderComparison.h"
#include "UpdateFileReaders.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace {

/// What is to be known of an update file.
struct FileState {
    bool exists = false;
    KvEReadStatus status = KvEReadStatus::cannotOpen;
    KvTUpdateFileHeader header;
    /// What it is in place of a regular file; empty if it is one.
    std::string fault;
};

/// Looks at the update files of the entries; into each file once.
class FileRules {
public:
    FileRules(const KvTCheckedArchive& checked, KvCFindingList& findings) : checked_(checked), findings_(findings) {}

    void check(const KvTArchiveFile& file) {
        // A file elsewhere is warned of by its name, and nothing is opened for a warning.
        if (leavesArchiveFolder(checked_.archive.folder(), file.name.view())) {
            return;
        }
        const KvCOutlineValue entry = checked_.outlineOf(file);
        const FileState& state = stateOf(file.name);
        if (!state.exists || state.status == KvEReadStatus::cannotOpen) {
            // Where the reader needs the file, this is an error already.
            if (file.hasOwnChecksum) {
                warnOfAbsence(entry.find("name"), state);
            }
            return;
        }
        if (state.header.extent != KvEFileExtent::whole) {
            warnOfExtent(entry.find("name"), state.header.extent);
        } else if (state.status == KvEReadStatus::success) {
            compareHeader(entry, file, state.header);
        }
    }

private:
    const FileState& stateOf(const KvCString& name) {
        const auto [found, isNew] = states_.try_emplace(name.view());
        if (isNew) {
            FileState& state = found->second;
            const std::wstring path = checked_.archive.pathOf(name);
            state.exists = pathExists(path);
            state.status = state.exists ? readUpdateFile(path, state.header) : KvEReadStatus::cannotOpen;
            if (state.exists && state.status == KvEReadStatus::cannotOpen) {
                state.fault = faultOfKind(path);
            }
        }
        return found->second;
    }

    void warnOfAbsence(KvCOutlineValue name, const FileState& state) {
        if (state.exists) {
            findings_.warn(KvECheckRule::updateFileUnreadable, name,
                           "The update file " + inQuotes(name.text()) +
                               (state.fault.empty() ? " cannot be read." : " is " + state.fault + "."));
        } else {
            const KvTFindingRow& row = findingRow(KvECheckRule::updateFileMissing);
            std::string suggestion = suggestionFor(name.text(), checked_.folder);
            findings_.add(row, name, "The update file " + inQuotes(name.text()) + " is not in the archive folder.",
                          suggestion.empty() ? hintOf(row) : std::move(suggestion));
        }
    }

    void warnOfExtent(KvCOutlineValue name, KvEFileExtent extent) {
        const bool isEmpty = extent == KvEFileExtent::empty;
        findings_.warn(isEmpty ? KvECheckRule::updateFileEmpty : KvECheckRule::updateFileCut, name,
                       "The update file " + inQuotes(name.text()) +
                           (isEmpty ? " is empty." : " ends within its header."));
    }

    void compareHeader(KvCOutlineValue entry, const KvTArchiveFile& file, const KvTUpdateFileHeader& header) {
        if (file.hasOwnChecksum) {
            compareChecksum(entry.find("checksumCrc32"), file, header);
        }
        compareVersion(entry, file, header);
        for (const KvTExcludedId& excluded : excludedIds(header, file)) {
            warnOfExcludedId(entry, excluded);
        }
    }

    void compareChecksum(KvCOutlineValue value, const KvTArchiveFile& file, const KvTUpdateFileHeader& header) {
        if (tellsOtherChecksum(header, file)) {
            findings_.warn(KvECheckRule::checksumMismatch, value,
                           "The description tells the checksum " + std::to_string(file.checksumCrc32) +
                               ", the update file " + std::to_string(header.checksum) + ".");
        }
    }

    void compareVersion(KvCOutlineValue entry, const KvTArchiveFile& file, const KvTUpdateFileHeader& header) {
        const KvCOutlineValue value = entry.find("version");
        if (value.kind() == KvEJsonKind::null || !tellsOtherVersion(header, file)) {
            return;
        }
        const std::string told(file.version.getAsString().view());
        const std::string found(header.version.getAsString().view());
        findings_.warn(KvECheckRule::versionMismatch, value.isValid() ? value : entry,
                       (value.isValid() ? "The description tells the version " + told
                                        : "Without \"version\" the file has that of the archive, " + told) +
                           ", the update file tells " + found + ".",
                       inQuotes(found));
    }

    void warnOfExcludedId(KvCOutlineValue entry, const KvTExcludedId& excluded) {
        const std::string_view key = propertyKey(excluded.property);
        const KvCOutlineValue owner = excluded.isShared ? entry : entry.find("boards").at(excluded.selection);
        const KvCOutlineValue value = owner.find(key);
        KvCOutlineValue place = value.isValid() ? value : entry;
        if (const KvCOutlineValue item = value.at(excluded.item); item.isValid()) {
            place = item;
        }
        std::string allowed =
            value.isValid() ? "The description allows the " + std::string(excluded.kind) + " compatibility identifier "
                            : "Without " + inQuotes(key) + " the entry is for the identifier ";
        allowed.append(std::to_string(excluded.id)).append(", the update file is for ").append(excluded.range);
        findings_.warn(KvECheckRule::compatibilityMismatch, place, allowed.append("."), inQuotes(key));
    }

    const KvTCheckedArchive& checked_;
    KvCFindingList& findings_;
    std::unordered_map<std::string_view, FileState> states_;
};

void warnOfUnnamedFiles(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    const KvCOutlineValue entries = checked.outline.root().find("files");
    if (entries.kind() != KvEJsonKind::array) {
        return;
    }
    for (const std::string& file : checked.folder.unnamed()) {
        if (!checked.folder.isDescription(file)) {
            findings.warn(KvECheckRule::unnamedFile, entries,
                          "No entry names the file " + inQuotes(file) + " of the archive folder.");
        }
    }
}

} // namespace

void warnOfFiles(const KvTCheckedArchive& checked, KvCFindingList& findings) {
    FileRules rules(checked, findings);
    for (const KvTArchiveFile& file : checked.archive.files()) {
        rules.check(file);
    }
    warnOfUnnamedFiles(checked, findings);
}
