#include "KvCFirmwareArchive.h"

#include "ArchivePaths.h"
#include "EntryRules.h"
#include "Files.h"
#include "InfoRules.h"
#include "KvCConsoleWriter.h"
#include "UpdateFileReaders.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

/// The document at `path`; nothing after a reported error.
std::optional<json> readDocument(const std::wstring& path, KvCArchiveFindings& findings) {
    FileStream file = openForReading(path);
    if (file == nullptr) {
        (void)findings.error({KvEArchiveRule::descriptionFileOpens},
                             L"ERROR: Cannot open archive description file %s\n", path.c_str());
        return std::nullopt;
    }
    json document = json::parse(file.get());
    file.reset();
    if (document.is_invalid()) {
        (void)findings.error({KvEArchiveRule::descriptionIsJson},
                             L"ERROR: The archive description file %s is corrupt. Invalid JSON data.\n", path.c_str());
        return std::nullopt;
    }
    return document;
}

/// Moves the "files" array out of the description; nothing after a reported error.
std::optional<json> takeFiles(json& document, KvCArchiveFindings& findings) {
    const jsonView root = document.view();
    for (std::size_t member = 0; root.is_object() && member < root.size(); ++member) {
        if (root.key(member) == "files" && root.at(member).is_array()) {
            return document.takeItem(member);
        }
    }
    (void)findings.error(
        {KvEArchiveRule::filesIsArray},
        L"ERROR: The archive description file is corrupt. Property \"files\" is missing or invalid.\n");
    return std::nullopt;
}

} // namespace

bool KvCFirmwareArchive::readArchive(KvCErrorListPool& errors) {
    return readDescriptionFile(errors) && completeFromUpdateFiles();
}

bool KvCFirmwareArchive::readDescriptionFile(KvCErrorListPool& /*errors*/) {
    KvCArchiveFindings findings(writer_);
    return parseDescription(options_.archiveFolder + L"\\" + options_.descriptionFileName, findings);
}

bool KvCFirmwareArchive::parseDescription(const std::wstring& path, KvCArchiveFindings& findings) {
    const std::uint32_t errorsBefore = findings.errorCount();
    std::optional<json> document = readDocument(path, findings);
    if (!document || !readInfo(findings, document->view(), info_)) {
        return false;
    }
    std::optional<json> files = takeFiles(*document, findings);
    if (!files) {
        return false;
    }
    readFiles(*files, findings);
    return findings.errorCount() == errorsBefore;
}

void KvCFirmwareArchive::readFiles(json& files, KvCArchiveFindings& findings) {
    files_.clear();
    maxSequence_ = 0;
    ignoredEntryCount_ = 0;
    const std::size_t count = files.view().size();
    files_.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        KvTEntryShape shape;
        bool goOn = true;
        switch (checkEntry(findings, files.view().at(index), static_cast<std::uint32_t>(index), shape, goOn)) {
        case KvEEntryOutcome::accepted:
            appendEntry(files.takeItem(index), shape);
            break;
        case KvEEntryOutcome::skipped:
            ++ignoredEntryCount_;
            break;
        case KvEEntryOutcome::refused:
            break;
        }
        if (!goOn) {
            return;
        }
    }
}

void KvCFirmwareArchive::appendEntry(json entry, const KvTEntryShape& shape) {
    const EntryProperties properties(entry.view());
    KvTArchiveFile file;
    file.name = KvCString(properties[KvEProperty::name].get_string());
    file.sequence = static_cast<std::uint32_t>(properties[KvEProperty::sequence].get_unsigned());
    maxSequence_ = std::max(maxSequence_, file.sequence);
    file.hasTargetPath = shape.hasTargetPath;
    const jsonView version = properties[KvEProperty::version];
    if (!version.is_valid()) {
        file.version = info_.archiveVersion;
    } else if (version.is_null()) {
        file.version = KvCVersion();
    } else {
        file.version = KvCVersion(std::string(version.get_string()).c_str());
    }
    if (const jsonView checksum = properties[KvEProperty::checksumCrc32]; checksum.is_valid()) {
        file.checksumCrc32 = static_cast<std::uint32_t>(checksum.get_unsigned());
    }
    const jsonView mode = properties[KvEProperty::mode];
    file.mode = mode.is_string() && mode.get_string() == "upgrade" ? upgradeMode : standardMode;
    file.description = std::move(entry);
    files_.push_back(std::move(file));
}

bool KvCFirmwareArchive::completeFromUpdateFiles() {
    KvCArchiveFindings findings(writer_);
    std::uint32_t opened = 0;
    for (KvTArchiveFile& file : files_) {
        if (file.checksumCrc32 != unknownValue) {
            continue;
        }
        if (!completeFromUpdateFile(file, findings)) {
            return false;
        }
        ++opened;
    }
    if (opened > 0 && options_.mode != KvNReflasher::dumpArchiveDescription) {
        writer_.print(L"%u update files needed to be opened to get parameters not contained in the description "
                      L"file.\n\n",
                      opened);
    }
    return true;
}

bool KvCFirmwareArchive::completeFromUpdateFile(KvTArchiveFile& file, KvCArchiveFindings& findings) {
    const std::wstring path = updateFilePath(options_, file.name);
    if (!pathExists(path)) {
        file.fileMissing = true;
        return findings.error({KvEArchiveRule::updateFileExists},
                              L"ERROR: Cannot read checksum from update file. '%s' not found.\n", path.c_str());
    }
    KvTUpdateFileHeader header;
    if (readUpdateFile(path, header) != KvEReadStatus::success) {
        return findings.error({KvEArchiveRule::updateFileHasChecksum},
                              L"ERROR: Cannot read checksum from update file %hs.\n", file.name.c_str());
    }
    file.checksumCrc32 = header.checksum;
    return true;
}
