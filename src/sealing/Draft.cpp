#include "ArchivePaths.h"
#include "Files.h"
#include "Folders.h"
#include "KvCStringConversion.h"
#include "KvNJson.h"
#include "KvReleases.h"
#include "Manifest.h"
#include "ShownText.h"
#include "UpdateFileReaders.h"
#include "WholeFiles.h"

#include <boost/crc.hpp>

#include <optional>
#include <span>
#include <utility>

namespace KvNReflasher {

namespace {

using KvNJson::json;

/// The checksum of what a file holds; nothing if it cannot be read.
std::optional<std::uint32_t> crcOf(const std::wstring& path) {
    boost::crc_32_type crc;
    const bool isRead = readInPieces(path, [&crc](std::span<const std::uint8_t> piece) {
        crc.process_bytes(piece.data(), piece.size());
        return true;
    });
    return isRead ? std::optional<std::uint32_t>(crc.checksum()) : std::nullopt;
}

/// Sets each identifier that a header allows; what only a person knows if those are very many, or if one end is not
/// stated. A header that states none leaves the key out.
void setIds(json& entry, const char* key, const KvTIdRange& range) {
    constexpr std::uint32_t mostListed = 64;
    if (!range.isStated()) {
        return;
    }
    const bool isListed =
        range.lowest <= range.highest && range.highest != unknownValue && range.highest - range.lowest < mostListed;
    if (!isListed) {
        entry.set(key, "<identifiers>");
    } else if (range.lowest == range.highest) {
        entry.set(key, range.lowest);
    } else {
        json list = json::makeArray();
        for (std::uint32_t identifier = range.lowest; identifier <= range.highest; ++identifier) {
            list.append(identifier);
        }
        entry.set(key, std::move(list));
    }
}

/// Makes entries of update files.
class Draft {
public:
    explicit Draft(const std::wstring& folder) : folder_(folder) {}

    KvTDraft make() {
        json files = json::makeArray();
        if (otherKindOf(folder_) != "a folder") {
            draft_.faults.emplace_back("the folder cannot be listed");
        }
        for (const std::string& name : filesOfFolder(folder_)) {
            if (!isSealFile(name)) {
                addEntry(name, files);
            }
        }
        json info = json::makeObject();
        info.set("formatVersion", "1.0");
        info.set("archiveVersion", "<version of the archive>");
        info.set("productName", "<product>");
        info.set("archiveVariant", "");
        info.set("archiveName", "<name of the archive>");
        json description = json::makeObject();
        description.set("info", std::move(info));
        description.set("files", std::move(files));
        constexpr int indentation = 4;
        draft_.description = description.dump(indentation) + "\n";
        return std::move(draft_);
    }

private:
    void addEntry(const std::string& name, json& files) {
        const std::wstring path = pathBelow(folder_, KvCString(name.c_str()));
        KvTUpdateFileHeader header;
        const KvEReadStatus status = readUpdateFile(path, header);
        const std::optional<std::uint32_t> content = crcOf(path);
        if (status == KvEReadStatus::cannotOpen || !content) {
            draft_.faults.push_back(shownInQuotes(name) + " cannot be read");
            return;
        }
        const bool hasHeader = status == KvEReadStatus::success;
        json entry = json::makeObject();
        entry.set("name", std::string_view(name));
        entry.set("sequence", "<place in the order of the update>");
        entry.set("boardType", "<board type>");
        if (hasHeader) {
            setIds(entry, "hwCompatibilityId", header.hwCompatibilityIds());
            setIds(entry, "swCompatibilityId", header.swCompatibilityIds());
            entry.set("id", "<number of the element>");
        } else {
            entry.set("targetPath", "<path on the target>");
        }
        const bool hasVersion =
            hasHeader && header.version.getAsULong64() != unknownValue && header.version.getAsULong64() != 0;
        entry.set("version", hasVersion ? json(header.version.getAsString()) : json());
        entry.set("checksumCrc32", hasHeader && header.checksum != unknownValue ? header.checksum : *content);
        files.append(std::move(entry));
        ++draft_.fileCount;
    }

    const std::wstring& folder_;
    KvTDraft draft_;
};

} // namespace

KvTDraft draftArchive(const std::wstring& folder) {
    return Draft(folder).make();
}

} // namespace KvNReflasher
