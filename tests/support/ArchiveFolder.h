#pragma once

#include "KvNJson.h"
#include "ScratchFolder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// A file entry of an archive description: `entry("a.bin").board("QB4120", 1).sequence(10)`. It has sequence 1,
/// version 2.0 and checksum 2 unless it is given others, so that it updates the elements of updateElement().
class EntryBuilder {
public:
    explicit EntryBuilder(std::string_view name);

    EntryBuilder& sequence(std::uint32_t number);
    /// The entry updates element `id` of boards of this type.
    EntryBuilder& board(std::string_view boardType, std::uint32_t id);
    /// The entry is written to `targetPath` of targets whose node is of this board type.
    EntryBuilder& target(std::string_view boardType, std::string_view targetPath);
    EntryBuilder& variant(std::string_view boardVariant);
    EntryBuilder& version(std::string_view text);
    EntryBuilder& noVersion();
    EntryBuilder& checksum(std::uint32_t number);
    /// The checksum is that of the update file.
    EntryBuilder& noChecksum();
    EntryBuilder& mode(std::string_view text);

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] KvNJson::json build() const;

private:
    std::string name_;
    KvNJson::json entry_;
    std::optional<std::uint32_t> checksum_ = 2;
};

[[nodiscard]] EntryBuilder entry(std::string_view name);

/// A firmware archive in a scratch folder: a description in "archive.json" and the update files, as many bytes long as
/// their names.
class ArchiveFolder {
public:
    ArchiveFolder();

    /// Adds an entry and writes its update file.
    ArchiveFolder& add(const EntryBuilder& entry);
    /// Adds an entry whose update file is missing.
    ArchiveFolder& addWithoutFile(const EntryBuilder& entry);
    /// Sets a text of the description's "info".
    ArchiveFolder& info(std::string_view key, std::string_view text);
    /// Writes the description.
    void write() const;
    /// Removes an update file.
    void removeFile(std::string_view name) const;

    [[nodiscard]] const ScratchFolder& folder() const { return folder_; }
    [[nodiscard]] std::wstring wideText() const { return folder_.path().wstring(); }

private:
    [[nodiscard]] std::filesystem::path pathOf(std::string_view name) const;

    ScratchFolder folder_;
    KvNJson::json info_;
    KvNJson::json files_ = KvNJson::json::makeArray();
};
