#include "KvCFirmwareArchive.h"

#include "Crypto.h"
#include "DescriptionFile.h"
#include "DescriptionRules.h"
#include "Files.h"
#include "Folders.h"
#include "KvCConsoleWriter.h"
#include "MessageCapture.h"
#include "UpdateFileReaders.h"
#include "WholeFiles.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

/// SHA-256 of an open file, 64 hexadecimal digits; empty if it cannot be read.
std::string digestOf(std::FILE& file) {
    constexpr std::size_t pieceSize = 65536;
    std::vector<std::uint8_t> piece(pieceSize);
    KvCSha256 digest;
    bool isRead = seekTo(file, 0);
    for (std::size_t size = piece.size(); isRead && size == piece.size();) {
        size = std::fread(piece.data(), 1, piece.size(), &file);
        digest.add(KvTBytes(piece).first(size));
        isRead = std::ferror(&file) == 0;
    }
    return isRead ? hexOf(digest.digest()) : std::string();
}

/// What the file at `path` holds; nothing when it cannot be opened or read. `digest`, unless it is null, receives its
/// SHA-256.
std::optional<json> parseFile(const std::wstring& path, std::string* digest) {
    const FileStream file = openDescription(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    json document = json::parse(file.get());
    if (std::ferror(file.get()) != 0) {
        return std::nullopt;
    }
    if (digest != nullptr) {
        *digest = digestOf(*file);
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

std::vector<std::string> KvCFirmwareArchive::folderFiles() const {
    if (!copy_.folder.empty()) {
        return copy_.files;
    }
    // Without a folder it is the root.
    return filesOfFolder(options_.archiveFolder.empty() ? L"\\" : options_.archiveFolder);
}

bool KvCFirmwareArchive::reported(bool isRead) const {
    if (!isRead) {
        writer_.print(L"ERROR: Failed to read firmware archive.\n");
    }
    return isRead;
}

bool KvCFirmwareArchive::readDescriptionFile() {
    KvCArchiveFindings findings(writer_);
    const bool isRead = parseDescription(descriptionPath(), findings);
    refusal_ = findings.firstError();
    return isRead;
}

std::string KvCFirmwareArchive::descriptionDigest() const {
    if (!digest_.empty()) {
        return digest_;
    }
    const FileStream file = text_ ? nullptr : openDescription(descriptionPath());
    if (text_) {
        return hexOf(sha256Of(bytesOf(*text_)));
    }
    return file != nullptr ? digestOf(*file) : std::string();
}

bool KvCFirmwareArchive::readUpdateFiles() {
    KvCArchiveFindings findings(writer_);
    const bool isRead = completeFromUpdateFiles(findings);
    refusal_ = findings.firstError();
    return isRead;
}

bool KvCFirmwareArchive::parseDescription(const std::wstring& path, KvCArchiveFindings& findings) {
    digest_.clear();
    if (!keepsText_) {
        return readDocument(parseFile(path, keepsDigest_ ? &digest_ : nullptr), path, findings);
    }
    text_ = textOfFile(path, largestDescription);
    return parseDescription(path, text_, findings);
}

bool KvCFirmwareArchive::parseDescription(const std::wstring& path, const std::optional<std::string>& text,
                                          KvCArchiveFindings& findings) {
    return readDocument(text ? std::optional(json::parse(*text)) : std::nullopt, path, findings);
}

/// False after a reported error.
bool KvCFirmwareArchive::isDocument(const std::optional<json>& document, const std::wstring& path,
                                    KvCArchiveFindings& findings) const {
    const std::wstring shown = copy_.folder.empty() ? path : descriptionFilePath(options_);
    if (!document) {
        (void)findings.error({.rule = KvEArchiveRule::descriptionFileOpens, .fileFault = faultOfDescription(path)},
                             L"ERROR: Cannot open archive description file %s\n", shown.c_str());
        return false;
    }
    if (document->is_invalid()) {
        (void)findings.error({KvEArchiveRule::descriptionIsJson},
                             L"ERROR: The archive description file %s is corrupt. Invalid JSON data.\n", shown.c_str());
        return false;
    }
    return true;
}

bool KvCFirmwareArchive::readDocument(std::optional<json> document, const std::wstring& path,
                                      KvCArchiveFindings& findings) {
    const std::uint32_t errorsBefore = findings.errorCount();
    if (!isDocument(document, path, findings) || !readInfo(findings, document->view(), info_)) {
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
    ignoredFiles_.clear();
    maxSequence_ = 0;
    ignoredEntryCount_ = 0;
    const std::size_t count = files.view().size();
    files_.reserve(count);
    entries_ = std::make_shared<std::vector<json>>();
    entries_->reserve(count); // they must stay where they are
    for (std::size_t index = 0; index < count; ++index) {
        const KvTEntryVerdict verdict = checkEntry(findings, files.view().at(index), static_cast<std::uint32_t>(index));
        if (verdict.outcome == KvEEntryOutcome::accepted) {
            files_.push_back(takeEntry(files, index));
            maxSequence_ = std::max(maxSequence_, files_.back().sequence);
        } else if (verdict.outcome == KvEEntryOutcome::skipped) {
            ++ignoredEntryCount_;
            keepIgnoredEntry(files, index);
        }
        if (!verdict.goOn) {
            return;
        }
    }
}

KvTArchiveFile KvCFirmwareArchive::takeEntry(json& files, std::size_t index) {
    return makeArchiveFile({entries_, &entries_->emplace_back(files.takeItem(index))},
                           static_cast<std::uint32_t>(index), info_.archiveVersion);
}

/// A plan names such an entry as the reason why an element has none.
void KvCFirmwareArchive::keepIgnoredEntry(json& files, std::size_t index) {
    const KvCMessageCapture dropped;
    KvCArchiveFindings findings(dropped.writer());
    const KvTEntryVerdict verdict =
        checkIgnoredEntry(findings, files.view().at(index), static_cast<std::uint32_t>(index));
    if (verdict.outcome == KvEEntryOutcome::accepted) {
        ignoredFiles_.push_back(takeEntry(files, index));
    }
}

bool KvCFirmwareArchive::completeFromUpdateFiles(KvCArchiveFindings& findings) {
    const std::uint32_t errorsBefore = findings.errorCount();
    std::uint32_t opened = 0;
    for (KvTArchiveFile& file : files_) {
        if (file.checksumCrc32 != unknownValue) {
            continue;
        }
        if (!completeFromUpdateFile(file, findings, opened)) {
            return false;
        }
    }
    if (opened > 0 && options_.mode != KvNReflasher::dumpArchiveDescription) {
        writer_.print(L"%u update files needed to be opened to get parameters not contained in the description "
                      L"file.\n\n",
                      opened);
    }
    return findings.errorCount() == errorsBefore;
}

/// Counts in `opened` a file that could be read. False after an error that is to end the work.
bool KvCFirmwareArchive::completeFromUpdateFile(KvTArchiveFile& file, KvCArchiveFindings& findings,
                                                std::uint32_t& opened) {
    const std::wstring path = pathOf(file.name);
    KvTUpdateFileHeader header;
    const KvEReadStatus status = readUpdateFile(path, header);
    // Only a file that cannot be opened may be missing: the others need no look of their own.
    if (status == KvEReadStatus::cannotOpen && !pathExists(path)) {
        file.fileMissing = true;
        return findings.error({KvEArchiveRule::updateFileExists, file.descriptionIndex},
                              L"ERROR: Cannot read checksum from update file. '%s' not found.\n",
                              updateFilePath(options_, file.name).c_str());
    }
    if (status != KvEReadStatus::success) {
        return findings.error({.rule = KvEArchiveRule::updateFileHasChecksum,
                               .entry = file.descriptionIndex,
                               .fileFault = faultOfKind(path)},
                              L"ERROR: Cannot read checksum from update file %hs.\n", file.name.c_str());
    }
    file.checksumCrc32 = header.checksum;
    ++opened;
    return true;
}
