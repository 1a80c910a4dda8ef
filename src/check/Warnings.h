#pragma once

#include "FindingList.h"
#include "FolderFiles.h"
#include "JsonOutline.h"
#include "KvCFirmwareArchive.h"

#include <cstddef>
#include <vector>

/// An element of "files" as the description writes it.
struct KvTOutlinedEntry {
    KvCOutlineValue value;
    /// The reader passes over it.
    bool isSkipped = false;
};

/// A read archive, as the functions that look for warnings are given it.
struct KvTCheckedArchive {
    const KvCJsonOutline& outline;
    /// Every element of "files".
    const std::vector<KvTOutlinedEntry>& entries;
    /// What of it was accepted, with the checksums completed.
    const KvCFirmwareArchive& archive;
    /// The other files of its folder.
    KvCFolderFiles& folder;

    /// The accepted entry as the description writes it.
    [[nodiscard]] KvCOutlineValue outlineOf(const KvTArchiveFile& file) const {
        return file.descriptionIndex < entries.size() ? entries[file.descriptionIndex].value : KvCOutlineValue();
    }
};

/// Calls `visit` with each object that entries are made of: those that are not skipped, and the elements of their
/// "boards".
template <typename Visit>
void forEachEntryObject(const KvTCheckedArchive& checked, Visit&& visit) {
    for (const KvTOutlinedEntry& entry : checked.entries) {
        if (entry.isSkipped) {
            continue;
        }
        visit(entry.value);
        const KvCOutlineValue boards = entry.value.find("boards");
        for (std::size_t board = 0; boards.kind() == KvEJsonKind::array && board < boards.size(); ++board) {
            visit(boards.at(board));
        }
    }
}

// Each looks for one kind of what is read, but may not do what was meant.

/// Warns of texts in angle brackets, which drafts have in place of what only a person knows.
void warnOfGaps(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of update files that are missing or cannot be read, if the reader has no need of them, of those that are empty
/// or cut, and of those whose headers state other checksums, versions and compatibility identifiers than the
/// description. Warns of files in the archive folder that no entry names.
void warnOfFiles(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of keys that nobody reads (but for "comment", and the root's "$schema", which is for editors) and of keys that
/// an object has more than once.
void warnOfKeys(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of names of update files and of target paths that lead elsewhere than they seem to, or that only some systems
/// tell apart.
void warnOfNames(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of what no element can take, though it is read: entries all of whose elements are taken by earlier entries,
/// and elements of "boards" whose board types all occur in an earlier one. Entries that write a file of the target are
/// all written; of those the warning is that they write the same one.
///
/// What is warned of is so. Not every such entry is found: one that several earlier entries cover only together for one
/// board type is not, nor one behind many others of its board type and address.
void warnOfShadows(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of names that Windows takes for something else, and of characters that do not show.
void warnOfTexts(const KvTCheckedArchive& checked, KvCFindingList& findings);

/// Warns of values that are read, but not as they look: empty arrays, which match nothing, numbers of more than 32
/// bits, and versions that print differently.
void warnOfValues(const KvTCheckedArchive& checked, KvCFindingList& findings);
