#pragma once

#include "ArchiveFindings.h"
#include "ArchivePaths.h"
#include "DescriptionFile.h"
#include "KvTArchiveFile.h"
#include "KvTOptions.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A folder with copies of files of an archive, to be read in its place; no folder: there is none.
struct KvTArchiveCopy {
    std::wstring folder;
    /// The files that are in the archive's folder, but not below it, in ascending order. Not all need to be copied.
    std::vector<std::string> files;
};

/// The firmware archive of a session: its description and the checksums of its update files. Read once; failures are
/// printed.
class KvCFirmwareArchive {
public:
    /// Both must outlive the archive.
    KvCFirmwareArchive(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options)
        : writer_(writer), options_(options) {}

    /// Lets the following keep the text of the description file.
    void keepText() { keepsText_ = true; }
    /// Lets the following note the digest of the description file while it is read.
    void keepDigest() { keepsDigest_ = true; }
    /// SHA-256 of the description, 64 hexadecimal digits; empty if it cannot be read. Of a file whose digest was not
    /// kept, as it is now.
    [[nodiscard]] std::string descriptionDigest() const;
    /// Lets the following read the files of the copy. Messages go on to name the folder of the options.
    void readFrom(KvTArchiveCopy copy) { copy_ = std::move(copy); }
    [[nodiscard]] const KvTArchiveCopy& copy() const { return copy_; }
    /// The names of the files that are in the archive's folder, but not below it, in ascending order.
    [[nodiscard]] std::vector<std::string> folderFiles() const;
    /// The folder that files are read in.
    [[nodiscard]] const std::wstring& folder() const {
        return copy_.folder.empty() ? options_.archiveFolder : copy_.folder;
    }
    /// The path at which the file of this name is read.
    [[nodiscard]] std::wstring pathOf(const KvCString& name) const { return pathBelow(folder(), name); }
    /// The path at which the description is read.
    [[nodiscard]] std::wstring descriptionPath() const { return folder() + L"\\" + options_.descriptionFileName; }

    /// Reads the description file, then the checksums that it leaves out. True when both succeeded.
    [[nodiscard]] bool readArchive() { return readDescriptionFile() && readUpdateFiles(); }

    /// As those without "OrReport", and say so if that failed.
    /// @{
    [[nodiscard]] bool readArchiveOrReport() { return reported(readArchive()); }
    [[nodiscard]] bool readDescriptionOrReport() { return reported(readDescriptionFile()); }
    [[nodiscard]] bool readUpdateFilesOrReport() { return reported(readUpdateFiles()); }
    /// @}

    /// Reads and checks the description file that the options name.
    [[nodiscard]] bool readDescriptionFile();

    /// Takes the checksums that the description leaves out from the update files. False when one cannot be had.
    [[nodiscard]] bool readUpdateFiles();

    /// Reads and checks the description file at `path`; what is wrong goes to `findings`. False when it was refused,
    /// with what was accepted before left in place.
    [[nodiscard]] bool parseDescription(const std::wstring& path, KvCArchiveFindings& findings);

    /// The same for a file that was read already: `text` is what it holds, or nothing if it cannot be opened or read.
    [[nodiscard]] bool parseDescription(const std::wstring& path, const std::optional<std::string>& text,
                                        KvCArchiveFindings& findings);

    /// Takes the checksums that the description leaves out from the update files; those that cannot be had go to
    /// `findings`. False when there are any.
    [[nodiscard]] bool completeFromUpdateFiles(KvCArchiveFindings& findings);

    [[nodiscard]] const KvTArchiveInfo& info() const { return info_; }
    /// The accepted entries, in the order of the description.
    [[nodiscard]] const std::vector<KvTArchiveFile>& files() const { return files_; }
    /// Replaces the accepted entries.
    void setFiles(std::vector<KvTArchiveFile> files) { files_ = std::move(files); }
    /// Counts an element that entry `file` was matched to.
    void countMatch(std::uint32_t file) { ++files_[file].matchCount; }
    /// Notes that the update file of entry `file` was not found.
    void noteMissing(std::uint32_t file) { files_[file].fileMissing = true; }
    /// Highest sequence of the accepted entries; 0 when there are none.
    [[nodiscard]] std::uint32_t maxSequence() const { return maxSequence_; }
    /// Entries that are ignored for their feature level, as far as the other rules accept them.
    [[nodiscard]] const std::vector<KvTArchiveFile>& ignoredFiles() const { return ignoredFiles_; }
    /// Number of entries skipped for their feature level.
    [[nodiscard]] std::uint32_t ignoredEntryCount() const { return ignoredEntryCount_; }
    /// The text of the description file that was read last; nothing if it is not kept or could not be read.
    [[nodiscard]] const std::optional<std::string>& text() const { return text_; }
    /// Why the last readArchive() or readDescriptionFile() has failed: one line without end, UTF-8. Empty if it has
    /// not.
    [[nodiscard]] const std::string& refusal() const { return refusal_; }

private:
    [[nodiscard]] bool reported(bool isRead) const;
    [[nodiscard]] bool isDocument(const std::optional<KvNJson::json>& document, const std::wstring& path,
                                  KvCArchiveFindings& findings) const;
    [[nodiscard]] bool readDocument(std::optional<KvNJson::json> document, const std::wstring& path,
                                    KvCArchiveFindings& findings);
    void readFiles(KvNJson::json& files, KvCArchiveFindings& findings);
    [[nodiscard]] KvTArchiveFile takeEntry(KvNJson::json& files, std::size_t index);
    void keepIgnoredEntry(KvNJson::json& files, std::size_t index);
    [[nodiscard]] bool completeFromUpdateFile(KvTArchiveFile& file, KvCArchiveFindings& findings,
                                              std::uint32_t& opened);

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvTArchiveCopy copy_;
    KvTArchiveInfo info_;
    /// The JSON objects of the entries, which share it.
    std::shared_ptr<std::vector<KvNJson::json>> entries_;
    std::vector<KvTArchiveFile> files_;
    std::vector<KvTArchiveFile> ignoredFiles_;
    std::uint32_t maxSequence_ = 0;
    std::uint32_t ignoredEntryCount_ = 0;
    std::string refusal_;
    bool keepsText_ = false;
    bool keepsDigest_ = false;
    std::string digest_;
    std::optional<std::string> text_;
};
