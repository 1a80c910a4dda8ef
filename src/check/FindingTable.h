#pragma once

#include "ArchiveFindings.h"
#include "KvIArchive.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Rules that the reader of archives does not know: an archive that breaks one is read, but may not do what was meant.
enum class KvECheckRule : std::uint8_t {
    unknownKey,
    misplacedKey,
    duplicateKey,
    emptyArray,
    emptyVariant,
    upgradeWithoutVersion,
    numberTooLarge,
    versionSpelling,
    nameWithSeparator,
    nameCase,
    reservedName,
    unportableName,
    hiddenCharacter,
    outsideArchive,
    outsideTarget,
    targetPathWithRoot,
    targetPathSeparator,
    targetPathWithoutName,
    targetPathCase,
    updateFileMissing,
    updateFileUnreadable,
    updateFileEmpty,
    updateFileCut,
    checksumMismatch,
    versionMismatch,
    compatibilityMismatch,
    unnamedFile,
    shadowedEntry,
    sameTargetPath,
    unreachableBoard,
    gap,
    releaseRefused
};

/// The object that a finding is about.
enum class KvEFindingSubject : std::uint8_t { root, info, entry };

/// The texts of a broken rule besides its message, which is made where it is found.
struct KvTFindingRow {
    /// Stays as it is from version to version.
    std::string_view code;
    KvNReflasher::KvESeverity severity = KvNReflasher::KvESeverity::warning;
    /// For the documentation.
    std::string_view meaning;
    /// "{}" stands for what is known only where the rule is broken.
    std::string_view hint;
    /// Of a rule of the reader: the object that its findings are about, and the keys of which they name the first one
    /// that the object has, separated by blanks.
    KvEFindingSubject subject = KvEFindingSubject::entry;
    std::string_view keys = {};
};

/// The row of a rule.
/// @{
[[nodiscard]] const KvTFindingRow& findingRow(KvEArchiveRule rule);
[[nodiscard]] const KvTFindingRow& findingRow(KvECheckRule rule);
/// @}

/// All rows: those of the reader's rules, then the others, each in the order of its enumeration.
[[nodiscard]] std::vector<KvTFindingRow> allFindingRows();

/// The row's hint with `text` in its place, if it has one.
[[nodiscard]] std::string hintOf(const KvTFindingRow& row, std::string_view text = {});
