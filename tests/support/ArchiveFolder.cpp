#include "ArchiveFolder.h"

#include <gtest/gtest.h>

#include <fstream>

EntryBuilder::EntryBuilder(std::string_view name) : name_(name) {
    entry_.set("name", name);
    entry_.set("sequence", std::uint32_t(1));
    entry_.set("version", "2.0");
}

KvNJson::json EntryBuilder::build() const {
    KvNJson::json entry = entry_;
    if (checksum_) {
        entry.set("checksumCrc32", *checksum_);
    }
    return entry;
}

EntryBuilder& EntryBuilder::sequence(std::uint32_t number) {
    entry_.set("sequence", number);
    return *this;
}

EntryBuilder& EntryBuilder::board(std::string_view boardType, std::uint32_t id) {
    entry_.set("boardType", boardType);
    entry_.set("id", id);
    return *this;
}

EntryBuilder& EntryBuilder::target(std::string_view boardType, std::string_view targetPath) {
    entry_.set("boardType", boardType);
    entry_.set("targetPath", targetPath);
    return *this;
}

EntryBuilder& EntryBuilder::variant(std::string_view boardVariant) {
    entry_.set("boardVariant", boardVariant);
    return *this;
}

EntryBuilder& EntryBuilder::version(std::string_view text) {
    entry_.set("version", text);
    return *this;
}

EntryBuilder& EntryBuilder::noVersion() {
    entry_.set("version", KvNJson::json());
    return *this;
}

EntryBuilder& EntryBuilder::checksum(std::uint32_t number) {
    checksum_ = number;
    return *this;
}

EntryBuilder& EntryBuilder::noChecksum() {
    checksum_.reset();
    return *this;
}

EntryBuilder& EntryBuilder::mode(std::string_view text) {
    entry_.set("mode", text);
    return *this;
}

EntryBuilder entry(std::string_view name) {
    return EntryBuilder(name);
}

ArchiveFolder::ArchiveFolder() {
    info("formatVersion", "1.0");
    info("archiveVersion", "23.2.1");
    info("productName", "Product");
    info("archiveVariant", "Variant");
    info("archiveName", "Archive");
}

ArchiveFolder& ArchiveFolder::info(std::string_view key, std::string_view text) {
    info_.set(key, text);
    return *this;
}

std::filesystem::path ArchiveFolder::pathOf(std::string_view name) const {
    return folder_.path() / std::filesystem::path(std::u8string(name.begin(), name.end()));
}

ArchiveFolder& ArchiveFolder::add(const EntryBuilder& entry) {
    std::ofstream file(pathOf(entry.name()), std::ios::binary);
    file << entry.name();
    file.close();
    EXPECT_TRUE(file.good()) << "cannot write " << entry.name();
    return addWithoutFile(entry);
}

ArchiveFolder& ArchiveFolder::addWithoutFile(const EntryBuilder& entry) {
    files_.append(entry.build());
    return *this;
}

void ArchiveFolder::write() const {
    KvNJson::json description;
    description.set("info", info_);
    description.set("files", files_);
    folder_.write("archive.json", description.dump(4));
}

void ArchiveFolder::removeFile(std::string_view name) const {
    EXPECT_TRUE(std::filesystem::remove(pathOf(name))) << name;
}
