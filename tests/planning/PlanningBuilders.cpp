#include "PlanningBuilders.h"

#include "ArchiveFindings.h"
#include "KvCFirmwareArchive.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace {

constexpr std::string_view head =
    R"({"info": {"formatVersion": "1.0", "archiveVersion": "9.0", "productName": "P", "archiveName": "A"}, "files": [)";
constexpr std::string_view entryHead = R"({"name": "a.bin", "sequence": 1, "version": "2.0", "checksumCrc32": 2)";

void failWith(const std::wstring& message) {
    ADD_FAILURE() << testing::PrintToString(message);
}

std::string descriptionOf(const std::vector<std::string>& entries) {
    std::string text(head);
    std::string_view separator;
    for (const std::string& members : entries) {
        text.append(separator).append(entryHead).append(", ").append(members).append("}");
        separator = ",\n";
    }
    text += "]}\n";
    std::replace(text.begin(), text.end(), '\'', '"');
    return text;
}

} // namespace

void readEntries(KvCFirmwareArchive& archive, const KvCConsoleWriter& writer, const std::vector<std::string>& entries) {
    const ScratchFolder folder;
    folder.write("archive.json", descriptionOf(entries));
    KvCArchiveFindings findings(writer);
    EXPECT_TRUE(archive.parseDescription((folder.path() / "archive.json").wstring(), findings));
}

std::vector<KvTArchiveFile> filesOf(const std::vector<std::string>& entries) {
    KvTCallbacks callbacks;
    callbacks.message = failWith;
    const KvCConsoleWriter writer(callbacks);
    const KvNReflasher::KvTOptions options{};
    KvCFirmwareArchive archive(writer, options);
    readEntries(archive, writer, entries);
    EXPECT_EQ(entries.size(), archive.files().size());
    return archive.files();
}

KvTArchiveFile fileOf(const std::string& members) {
    std::vector<KvTArchiveFile> files = filesOf({members});
    return files.empty() ? KvTArchiveFile() : std::move(files.front());
}

ElementBuilder::ElementBuilder(const char* boardType) {
    element_.boardType = boardType;
    element_.valid = true;
    element_.active = true;
    element_.version = KvCVersion("1.0");
}

ElementBuilder& ElementBuilder::id(std::uint32_t number) {
    element_.elementId = number;
    return *this;
}

ElementBuilder& ElementBuilder::location(std::string_view path) {
    element_.isFileSystemElement = true;
    element_.location = KvCString(path);
    return *this;
}

ElementBuilder& ElementBuilder::variant(const char* text) {
    element_.boardVariant = text;
    return *this;
}

ElementBuilder& ElementBuilder::boardId(std::uint32_t number) {
    element_.boardId = number;
    return *this;
}

ElementBuilder& ElementBuilder::hardware(std::uint32_t compatibilityId) {
    element_.hwCompatibilityId = compatibilityId;
    return *this;
}

ElementBuilder& ElementBuilder::software(std::uint32_t compatibilityId) {
    element_.swCompatibilityId = compatibilityId;
    return *this;
}

ElementBuilder& ElementBuilder::version(const char* text) {
    element_.version = KvCVersion(text);
    return *this;
}

ElementBuilder& ElementBuilder::checksum(std::uint32_t number) {
    element_.hasChecksum = true;
    element_.checksumCrc32 = number;
    return *this;
}

ElementBuilder& ElementBuilder::named(const char* elementName) {
    element_.name = elementName;
    return *this;
}

ElementBuilder& ElementBuilder::board(const char* boardName, std::uint32_t serialNumber) {
    element_.boardName = boardName;
    element_.serialNumber = serialNumber;
    return *this;
}

ElementBuilder& ElementBuilder::shownAs(const char* displayName) {
    element_.displayName = displayName;
    return *this;
}

ElementBuilder& ElementBuilder::invalid() {
    element_.valid = false;
    return *this;
}

ElementBuilder& ElementBuilder::inactive() {
    element_.active = false;
    return *this;
}

ElementBuilder& ElementBuilder::disabled() {
    element_.disabled = true;
    return *this;
}

ElementBuilder& ElementBuilder::custom() {
    element_.custom = 1;
    return *this;
}

ElementBuilder element(const char* boardType, std::uint32_t id) {
    return ElementBuilder(boardType).id(id);
}

ElementBuilder fileElement(const char* boardType, std::string_view location) {
    return ElementBuilder(boardType).location(location);
}
