#include "SealedFolder.h"

#include "Files.h"
#include "FolderTree.h"
#include "KvCStringConversion.h"
#include "ShownText.h"
#include "SshSignature.h"
#include "WholeFiles.h"

#include <map>
#include <string_view>

namespace {

/// The content of the file at `path` in `folder`; nothing if there is none or, with a `reason`, if it cannot be read. A
/// folder that is not there, such as a share that does not answer, has none.
std::optional<std::string> textOrReason(const std::wstring& folder, const std::wstring& path, std::uint64_t most,
                                        std::string& reason) {
    reason.clear();
    if (isLink(path)) {
        reason = "it is a link, not a regular file";
        return std::nullopt;
    }
    std::optional<std::string> text = textOfFile(path, most);
    if (!text && !isAbsent(path) && pathExists(folder)) {
        const std::string_view kind = otherKindOf(path);
        reason = kind.empty() ? "it cannot be read, or is larger than anything that is read"
                              : "it is " + std::string(kind) + ", not a regular file";
    }
    return text;
}

} // namespace

std::wstring KvCSealedFolder::pathOf(const std::string& name) const {
    return folder_ + L"\\" + toWide(KvCString(name.c_str()));
}

std::optional<std::string> KvCSealedFolder::manifest(std::string& reason) {
    return textOrReason(folder_, pathOf(std::string(manifestName)), largestManifest, reason);
}

std::optional<std::string> KvCSealedFolder::signatures(std::string& reason) {
    return textOrReason(folder_, pathOf(std::string(signatureName)), mostSignatureBytes, reason);
}

std::vector<KvTStoredDifference> KvCSealedFolder::differencesFrom(const KvTManifest& manifest) {
    std::vector<KvTStoredDifference> differences;
    std::map<std::string_view, const KvTSealedFile*> expected;
    for (const KvTSealedFile& file : manifest.files) {
        expected.emplace(file.name, &file);
    }
    const std::optional<std::vector<KvTFolderEntry>> entries = entriesBelow(folder_);
    if (!entries) {
        return {{"", "the archive folder cannot be listed"}};
    }
    for (const KvTFolderEntry& entry : *entries) {
        if (isSealFile(entry.name)) {
            continue;
        }
        const auto found = expected.find(entry.name);
        if (found == expected.end()) {
            differences.push_back({"", shownInQuotes(entry.name) + " is additional"});
            continue;
        }
        if (!entry.isRegularFile) {
            differences.push_back({entry.name, "'" + entry.name + "' is not a regular file"});
        } else if (entry.size != found->second->size) {
            differences.push_back({entry.name, "'" + entry.name + "' has " + std::to_string(entry.size) +
                                                   " bytes and not " + std::to_string(found->second->size)});
        }
        expected.erase(found);
    }
    for (const KvTSealedFile& file : manifest.files) {
        if (expected.contains(file.name)) {
            differences.push_back({file.name, "'" + file.name + "' is missing"});
        }
    }
    return differences;
}

bool KvCSealedFolder::read(const KvTSealedFile& file, const Sink& sink, std::string& reason) {
    std::uint64_t size = 0;
    const bool isRead = readInPieces(pathOf(file.name), [&](KvTBytes piece) {
        size += piece.size();
        return size <= file.size && sink(piece);
    });
    if (!isRead || size != file.size) {
        reason = size > file.size ? "is longer than its manifest says"
                 : size == 0      ? "cannot be read"
                                  : "cannot be read to its end";
    }
    return isRead && size == file.size;
}
