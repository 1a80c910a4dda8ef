#pragma once

#include "KvCFirmwareArchive.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The entries of an archive, read by the library. Each is the text of its JSON object's members with ' for ", such as
/// `'boardType': 'X', 'id': 1`; without others it has sequence 1, version 2.0, checksum 2. An entry that is refused is
/// a test failure.
[[nodiscard]] std::vector<KvTArchiveFile> filesOf(const std::vector<std::string>& entries);
/// The same for one entry.
[[nodiscard]] KvTArchiveFile fileOf(const std::string& members);
/// Lets `archive` read such entries; those that it ignores are allowed.
void readEntries(KvCFirmwareArchive& archive, const KvCConsoleWriter& writer, const std::vector<std::string>& entries);

/// An element of a target: valid, active, of version 1.0, without checksum, and with 0 and empty texts for the rest.
class ElementBuilder {
public:
    explicit ElementBuilder(const char* boardType);

    ElementBuilder& id(std::uint32_t number);
    /// A file-system element of this location.
    ElementBuilder& location(std::string_view path);
    ElementBuilder& variant(const char* text);
    ElementBuilder& boardId(std::uint32_t number);
    ElementBuilder& hardware(std::uint32_t compatibilityId);
    ElementBuilder& software(std::uint32_t compatibilityId);
    ElementBuilder& version(const char* text);
    ElementBuilder& checksum(std::uint32_t number);
    ElementBuilder& named(const char* elementName);
    ElementBuilder& board(const char* boardName, std::uint32_t serialNumber);
    ElementBuilder& shownAs(const char* displayName);
    ElementBuilder& invalid();
    ElementBuilder& inactive();
    ElementBuilder& disabled();
    ElementBuilder& custom();

    [[nodiscard]] const KvTUpdateElement& build() const { return element_; }

private:
    KvTUpdateElement element_;
};

/// An element that entries address by identifier.
[[nodiscard]] ElementBuilder element(const char* boardType, std::uint32_t id);
/// An element that entries address by target path.
[[nodiscard]] ElementBuilder fileElement(const char* boardType, std::string_view location);
