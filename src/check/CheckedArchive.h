#pragma once

#include "FindingList.h"
#include "JsonOutline.h"
#include "KvCFirmwareArchive.h"
#include "KvTOptions.h"

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
    const KvNReflasher::KvTOptions& options;
    const KvCJsonOutline& outline;
    /// Every element of "files".
    const std::vector<KvTOutlinedEntry>& entries;
    /// What of it was accepted, with the checksums completed.
    const KvCFirmwareArchive& archive;

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
