#include "FindingTable.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using enum KvNReflasher::KvESeverity;
using enum KvEArchiveRule;
using enum KvECheckRule;

template <typename Rule>
struct RuleRow {
    Rule rule;
    KvTFindingRow row;
};

template <typename Table, typename Rule>
constexpr bool isInOrder(const Table& table, Rule lastRule) {
    for (std::size_t index = 0; index < table.size(); ++index) {
        if (static_cast<std::size_t>(table[index].rule) != index) {
            return false;
        }
    }
    return table.back().rule == lastRule;
}

/// One for each rule, in their order.
constexpr auto readerTable = std::to_array<RuleRow<KvEArchiveRule>>(
    {{descriptionFileOpens,
      {"description-unreadable", error, "the description cannot be opened or read, or is larger than 256 MiB",
       "Check the folder given with --archive and the name given with --description.", KvEFindingSubject::root, ""}},
     {descriptionIsJson,
      {"invalid-json", error, "the description is not one JSON document", "{}", KvEFindingSubject::root, ""}},
     {infoIsObject,
      {"info-missing", error, "`info` is missing or not an object", R"(Give the archive an object "info".)",
       KvEFindingSubject::root, "info"}},
     {formatVersionIsString,
      {"format-version-missing", error, "`formatVersion` is missing or not a text", R"(Write "formatVersion": "1.0".)",
       KvEFindingSubject::info, "formatVersion"}},
     {formatVersionIsVersion,
      {"format-version-invalid", error, "`formatVersion` is not a version, or 0", R"(Write "formatVersion": "1.0".)",
       KvEFindingSubject::info, "formatVersion"}},
     {formatVersionIsSupported,
      {"format-version-unsupported", error, "the format is not 1.x",
       "Formats 1.x are supported: use the update tool that belongs to the archive.", KvEFindingSubject::info,
       "formatVersion"}},
     {archiveVersionIsString,
      {"archive-version-missing", error, "`archiveVersion` is missing or not a text",
       R"(Write the archive's version as a text, such as "23.2.1".)", KvEFindingSubject::info, "archiveVersion"}},
     {archiveVersionIsVersion,
      {"archive-version-invalid", error, "`archiveVersion` is not a version, or 0",
       R"(Write a version other than 0 such as "23.2.1", "23.2b3" or "23.2.1.4"; the first three numbers go up to )"
       "255, the others up to 65535.",
       KvEFindingSubject::info, "archiveVersion"}},
     {productNameIsString,
      {"product-name-missing", error, "`productName` is missing or not a text", "Write the product's name as a text.",
       KvEFindingSubject::info, "productName"}},
     {archiveVariantIsString,
      {"archive-variant-invalid", error, "`archiveVariant` is not a text",
       R"(Write a text, or leave "archiveVariant" out.)", KvEFindingSubject::info, "archiveVariant"}},
     {archiveNameIsString,
      {"archive-name-missing", error, "`archiveName` is missing or not a text", "Write the archive's name as a text.",
       KvEFindingSubject::info, "archiveName"}},
     {filesIsArray,
      {"files-missing", error, "`files` is missing or not an array", R"(Give the archive an array "files".)",
       KvEFindingSubject::root, "files"}},
     {entryIsObject,
      {"entry-no-object", error, "an element of `files` is not an object", "Make each element of \"files\" an object.",
       KvEFindingSubject::entry, ""}},
     {featureLevelIsUnsigned,
      {"feature-level-invalid", error, "`featureLevel` is not an unsigned number",
       R"(Write a number without sign and fraction, or leave "featureLevel" out.)", KvEFindingSubject::entry,
       "featureLevel"}},
     {featureLevelIsSupported,
      {"entry-skipped", warning, "the entry needs a feature level that this tool does not know",
       "Feature levels up to 2 are supported: use a newer update tool if the entry is needed.",
       KvEFindingSubject::entry, "featureLevel"}},
     {mandatoryProperties,
      {"mandatory-property", error, "`name`, `sequence` or the board type is missing or wrong",
       R"(Give "name", "sequence", and either "boardType" or "boards".)", KvEFindingSubject::entry, ""}},
     {boardIsObjectWithType,
      {"board-without-type", error, "an element of `boards` is not an object with `boardType`",
       R"(Make each element of "boards" an object with "boardType".)", KvEFindingSubject::entry, ""}},
     {propertyType, {"property-type", error, "a value is of a wrong type", "Write {}.", KvEFindingSubject::entry, ""}},
     {propertyElements,
      {"property-elements", error, "an element of an array is of a wrong type", "Write {}.", KvEFindingSubject::entry,
       ""}},
     {versionIsVersion,
      {"version-invalid", error, "`version` is not a version, or 0",
       R"(Write a version other than 0 such as "23.2.1", "23.2b3" or "23.2.1.4"; the first three numbers go up to )"
       "255, the others up to 65535. A file without version has null.",
       KvEFindingSubject::entry, "version"}},
     {modeIsKnown,
      {"mode-unknown", error, "`mode` is neither `standard` nor `upgrade`", R"(Write "standard" or "upgrade".)",
       KvEFindingSubject::entry, "mode"}},
     {boardHasNoEntryProperties,
      {"entry-property-in-board", error, "`version`, `checksumCrc32` or `mode` in an element of `boards`",
       "Give it to the entry; boards whose files differ need entries of their own.", KvEFindingSubject::entry,
       "version checksumCrc32 mode"}},
     {idOrTargetPathNotBoth,
      {"id-and-target-path", error, "an entry has both `id` and `targetPath`",
       R"(Keep "id" for an element that the target updates itself, or "targetPath" for a file of the target; in )"
       R"("boards", too.)",
       KvEFindingSubject::entry, "targetPath"}},
     {idOrTargetPath,
      {"no-address", error, "an entry or one of its boards has neither `id` nor `targetPath`",
       R"(Give "id" or "targetPath" to the entry or to each element of its "boards".)", KvEFindingSubject::entry, ""}},
     {updateFileExists,
      {"checksum-file-missing", error, "the checksum is left out, and the update file is missing",
       R"(Put the file into the archive folder, or write its checksum as "checksumCrc32".)", KvEFindingSubject::entry,
       "name"}},
     {updateFileHasChecksum,
      {"checksum-unreadable", error, "the checksum is left out, and the update file does not state it",
       R"(The file has no header that is known: write its checksum as "checksumCrc32".)", KvEFindingSubject::entry,
       "name"}}});
static_assert(isInOrder(readerTable, updateFileHasChecksum));

constexpr auto checkTable = std::to_array<RuleRow<KvECheckRule>>(
    {{unknownKey,
      {"unknown-key", warning, "nobody reads this key (`comment` and the root's `$schema` are fine)", "{}"}},
     {misplacedKey,
      {"misplaced-key", warning, "a key of entries in an element of `boards`", "Give it to the entry, or remove it."}},
     {duplicateKey,
      {"duplicate-key", warning, "an object has the key already; the last value counts", "Remove the others."}},
     {emptyArray, {"empty-array", warning, "nothing can match; or the archive has no entries", "{}"}},
     {emptyVariant,
      {"empty-variant", warning, "the board variant `\"\"` matches no board",
       "Write null for boards without variant."}},
     {upgradeWithoutVersion,
      {"upgrade-without-version", warning,
       "the mode of the entry is `upgrade` and its version null: it updates only what is invalid or inactive",
       R"(Write the version, or the mode "standard".)"}},
     {numberTooLarge,
      {"number-too-large", warning, "a number of more than 32 bits is cut off, or matches nothing",
       "Write a number up to 4294967295."}},
     {versionSpelling,
      {"version-spelling", warning, "a version prints differently than it is written", "Write {} if that is meant."}},
     {nameWithSeparator,
      {"name-with-separator", warning, "the name of an update file is a path",
       "Put the file into the archive folder itself and write its plain name."}},
     {nameCase,
      {"name-case", warning, "two names differ only in case",
       "Write both the same way, or name one of the files differently: some systems take them for one file."}},
     {reservedName,
      {"reserved-name", warning,
       "the name of an update file, or a part of a target path, is that of a device of Windows, such as `NUL` or "
       "`com1.bin`",
       "Name the file differently: on Windows it cannot be one."}},
     {unportableName,
      {"unportable-name", warning,
       "the name of an update file, or a part of a target path, ends with a dot or blank, or has a character of "
       "`<>:\"?*` or a vertical bar",
       "Name the file differently: Windows does not allow that."}},
     {hiddenCharacter,
      {"hidden-character", warning,
       "a name, path, board type or variant has a control, bidirectional or zero-width character",
       "Remove the character: people do not see that it is there."}},
     {outsideArchive,
      {"outside-archive", warning, "an update file lies outside of the archive folder; other warnings do not open it",
       "Put the file into the archive folder and write its plain name."}},
     {outsideTarget,
      {"outside-target", warning, "a target path leads out of the target's root",
       R"(Write a path without ".." that leads upwards.)"}},
     {targetPathWithRoot,
      {"target-path-with-root", warning,
       "a target path names the root folder `/mnt/cn/cfdrive`, below which it is taken", "Leave {} out."}},
     {targetPathSeparator,
      {"target-path-separator", warning, "a target path has a `\\`, which does not separate folders on the target",
       R"(Separate folders by "/".)"}},
     {targetPathWithoutName,
      {"target-path-without-name", warning, "a target path is empty or ends with `/`: the update fails",
       "Write the name of the file behind its folder."}},
     {targetPathCase,
      {"target-path-case", warning, "two target paths differ only in case",
       "Write both the same way, or name one of the files differently: some targets take them for one file."}},
     {updateFileMissing,
      {"update-file-missing", warning, "an update file is missing whose checksum is written",
       "Put the file into the archive folder, or remove the entry."}},
     {updateFileUnreadable,
      {"update-file-unreadable", warning, "an update file is there, but cannot be read",
       "Make it a file that may be read."}},
     {updateFileEmpty, {"update-file-empty", warning, "an update file has no bytes", "Put the right file in place."}},
     {updateFileCut,
      {"update-file-cut", warning, "an update file ends within its header", "Put the whole file in place."}},
     {checksumMismatch,
      {"checksum-mismatch", warning, "the header of the file states another checksum than the description",
       R"(Write the file's checksum, leave "checksumCrc32" out, or put the right file in place.)"}},
     {versionMismatch,
      {"version-mismatch", warning,
       "the header of the file states another version than the entry, or than the archive if the entry has none",
       R"(Write "version": {}, or put the right file in place.)"}},
     {compatibilityMismatch,
      {"compatibility-mismatch", warning,
       "the header of the file states a range of compatibility identifiers without one that the entry allows (0 if it "
       "states none)",
       "Write the {} of the boards that the file is for, or put the right file in place."}},
     {unnamedFile,
      {"unnamed-file", warning,
       "the archive folder has a file that no entry names, other descriptions aside; folders in it are not looked into",
       "Remove the file, or give it an entry."}},
     {shadowedEntry,
      {"shadowed-entry", warning, "earlier entries take all elements that the entry is for",
       "Remove it, move it before the others, or narrow those down."}},
     {sameTargetPath,
      {"same-target-path", warning, "wherever the entry is written, an earlier one is written to the same file",
       R"(Remove one of them, or write another "targetPath".)"}},
     {unreachableBoard,
      {"unreachable-board", warning, "all board types of an element of `boards` occur in earlier ones",
       "Join it with the earlier one, or give it an entry of its own."}},
     {gap,
      {"gap", warning, "a text in angle brackets, as drafts of descriptions have it, stands for what is not known yet",
       "Write what belongs here, or leave the key out if it need not be there."}},
     {releaseRefused,
      {"not-accepted", KvNReflasher::KvESeverity::error,
       "the archive is not what its manifest says, or its signature does not hold, or nobody who is trusted has signed "
       "it",
       "Use the archive as it was released, with the trust folder of this place."}}});
static_assert(isInOrder(checkTable, releaseRefused));

} // namespace

const KvTFindingRow& findingRow(KvEArchiveRule rule) {
    return readerTable[static_cast<std::size_t>(rule)].row;
}

const KvTFindingRow& findingRow(KvECheckRule rule) {
    return checkTable[static_cast<std::size_t>(rule)].row;
}

std::vector<KvTFindingRow> allFindingRows() {
    std::vector<KvTFindingRow> rows;
    const auto add = [&rows](const auto& line) { rows.push_back(line.row); };
    std::for_each(readerTable.begin(), readerTable.end(), add);
    std::for_each(checkTable.begin(), checkTable.end(), add);
    return rows;
}

std::string hintOf(const KvTFindingRow& row, std::string_view text) {
    constexpr std::string_view placeholder = "{}";
    std::string hint(row.hint);
    if (const std::size_t place = hint.find(placeholder); place != std::string::npos) {
        hint.replace(place, placeholder.size(), text);
    }
    return hint;
}
