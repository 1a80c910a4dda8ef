#include "Manifest.h"

#include "FileNames.h"
#include "KvNJson.h"
#include "ShownText.h"
#include "Timestamp.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <utility>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

constexpr std::string_view formatName = "kvreflash.manifest";
constexpr std::uint32_t formatVersion = 1;

json textValue(const std::string& text) {
    return std::string_view(text);
}

std::optional<KvTSha256> digestOf(std::string_view text) {
    KvTSha256 digest{};
    if (text.size() != 2 * digest.size()) {
        return std::nullopt;
    }
    constexpr std::string_view digits = "0123456789abcdef";
    for (std::size_t index = 0; index < digest.size(); ++index) {
        const std::size_t high = digits.find(text[2 * index]);
        const std::size_t low = digits.find(text[2 * index + 1]);
        if (high == std::string_view::npos || low == std::string_view::npos) {
            return std::nullopt;
        }
        digest[index] = static_cast<std::uint8_t>(high * digits.size() + low);
    }
    return digest;
}

/// Adds the folders of a name, whatever their case.
void addFoldersOf(const std::string& name, std::set<std::string>& folders) {
    for (std::size_t end = name.find('/'); end != std::string::npos; end = name.find('/', end + 1)) {
        folders.insert(foldedCaseOf(std::string_view(name).substr(0, end)));
    }
}

/// Reads members of a manifest. The first that is missing or of another kind is the reason why there is none.
class ManifestReader {
public:
    explicit ManifestReader(std::string& reason) : reason_(reason) {}

    std::optional<KvTManifest> read(jsonView root) {
        const jsonView format = root.find("format");
        const jsonView name = format.find("name");
        if (!name.is_string() || name.get_string() != formatName) {
            return refuse("its format is not '" + std::string(formatName) + "'");
        }
        if (format.find("version").get_unsigned() != formatVersion) {
            return refuse("its format has another version than 1");
        }
        KvTManifest manifest;
        const std::optional<std::chrono::sys_seconds> created = momentOf(text(root, "created"));
        if (!created || !isPackedTime(*created)) {
            return refuse("its member 'created' is not a time from 1970 to 2242-03-16T12:56:31Z");
        }
        manifest.created = *created;
        manifest.archive = identity(root.find("archive"));
        readFiles(root.find("files"), manifest);
        return reason_.empty() ? std::optional(std::move(manifest)) : std::nullopt;
    }

private:
    std::nullopt_t refuse(std::string reason) {
        if (reason_.empty()) {
            reason_ = std::move(reason);
        }
        return std::nullopt;
    }

    std::string text(jsonView object, const char* key) {
        const jsonView value = object.find(key);
        if (!value.is_string()) {
            refuse("its member '" + std::string(key) + "' is not a text");
        }
        return std::string(value.get_string());
    }

    KvNReflasher::KvTArchiveIdentity identity(jsonView archive) {
        return {.archiveName = text(archive, "archiveName"),
                .archiveVersion = text(archive, "archiveVersion"),
                .productName = text(archive, "productName"),
                .formatVersion = text(archive, "formatVersion"),
                .archiveVariant = text(archive, "archiveVariant")};
    }

    void readFiles(jsonView files, KvTManifest& manifest) {
        if (!files.is_array()) {
            refuse("its member 'files' is not an array");
            return;
        }
        manifest.files.reserve(files.size());
        for (std::size_t index = 0; index < files.size() && reason_.empty(); ++index) {
            manifest.files.push_back(file(files.at(index)));
        }
        const std::vector<std::string> faults = faultsOfNames(manifest.files);
        if (!faults.empty()) {
            refuse(faults.front());
        }
    }

    KvTSealedFile file(jsonView record) {
        KvTSealedFile file;
        file.name = text(record, "name");
        const jsonView size = record.find("size");
        if (!size.is_number_unsigned()) {
            refuse(std::string("the size of ").append(shownInQuotes(file.name)) + " is not a number");
        }
        file.size = size.get_unsigned();
        const std::optional<KvTSha256> digest = digestOf(text(record, "sha256"));
        if (!digest) {
            refuse(std::string("the SHA-256 of ").append(shownInQuotes(file.name)) + " is not one");
        }
        file.sha256 = digest.value_or(KvTSha256());
        return file;
    }

    std::string& reason_;
};

} // namespace

std::string sealedNameOf(std::string_view name) {
    std::string sealed(name);
    std::replace(sealed.begin(), sealed.end(), '\\', '/');
    return sealed;
}

std::uint64_t KvTManifest::size() const {
    return std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const KvTSealedFile& file) { return sum + file.size; });
}

std::optional<KvTManifest> parseManifest(std::string_view text, std::string& reason) {
    std::string fault;
    const json document = json::parse(text, &fault);
    if (document.is_invalid()) {
        reason = "it is not valid JSON: " + fault;
        return std::nullopt;
    }
    reason.clear();
    return ManifestReader(reason).read(document.view());
}

std::string textOf(const KvTManifest& manifest) {
    json format = json::makeObject();
    format.set("name", formatName);
    format.set("version", formatVersion);
    json archive = json::makeObject();
    archive.set("archiveName", textValue(manifest.archive.archiveName));
    archive.set("archiveVersion", textValue(manifest.archive.archiveVersion));
    archive.set("productName", textValue(manifest.archive.productName));
    archive.set("formatVersion", textValue(manifest.archive.formatVersion));
    archive.set("archiveVariant", textValue(manifest.archive.archiveVariant));
    json files = json::makeArray();
    for (const KvTSealedFile& file : manifest.files) {
        json record = json::makeObject();
        record.set("name", textValue(file.name));
        record.set("size", file.size);
        record.set("sha256", textValue(hexOf(file.sha256)));
        files.append(std::move(record));
    }
    json document = json::makeObject();
    document.set("format", std::move(format));
    document.set("archive", std::move(archive));
    document.set("created", textValue(textOfMoment(manifest.created)));
    document.set("files", std::move(files));
    constexpr int indentation = 4;
    return document.dump(indentation) + "\n";
}

std::vector<std::string> faultsOfNames(const std::vector<KvTSealedFile>& files) {
    std::vector<std::string> faults;
    std::map<std::string, std::string_view> firstByFoldedCase{{std::string(manifestName), manifestName},
                                                              {std::string(signatureName), signatureName}};
    std::set<std::string> folders;
    for (const KvTSealedFile& file : files) {
        if (const std::string why = whyUnsafe(file.name); !why.empty()) {
            faults.push_back(std::string("the name ").append(shownInQuotes(file.name)) + " is not safe: " + why);
        } else if (file.name.size() > longestPackedName) {
            faults.push_back("the name '" + file.name + "' is longer than 100 bytes");
        } else if (file.size > largestPackedFile) {
            faults.push_back("the file '" + file.name + "' has 8 GiB or more");
        }
        addFoldersOf(file.name, folders);
        const auto [first, isNew] = firstByFoldedCase.try_emplace(foldedCaseOf(file.name), file.name);
        if (!isNew) {
            faults.push_back(std::string("the names ")
                                 .append(shownInQuotes(first->second))
                                 .append(" and ")
                                 .append(shownInQuotes(file.name))
                                 .append(first->second == file.name ? " are the same" : " differ only in case"));
        }
    }
    for (const auto& [foldedCase, name] : firstByFoldedCase) {
        if (folders.contains(foldedCase)) {
            faults.push_back(std::string("the name ").append(shownInQuotes(name)) + " is that of a folder, too");
        }
    }
    return faults;
}
