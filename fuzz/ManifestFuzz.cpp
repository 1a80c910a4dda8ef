// A manifest: reading it, writing it anew, and the names in it.

#include "FileNames.h"
#include "Manifest.h"
#include "PackageHeader.h"
#include "Property.h"
#include "TextConversion.h"
#include "Timestamp.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

namespace {

namespace fs = std::filesystem;

bool isSame(const KvTSealedFile& a, const KvTSealedFile& b) {
    return a.name == b.name && a.size == b.size && a.sha256 == b.sha256;
}

bool isSame(const KvNReflasher::KvTArchiveIdentity& a, const KvNReflasher::KvTArchiveIdentity& b) {
    return a.archiveName == b.archiveName && a.archiveVersion == b.archiveVersion && a.productName == b.productName &&
           a.formatVersion == b.formatVersion && a.archiveVariant == b.archiveVariant;
}

bool isSame(const KvTManifest& a, const KvTManifest& b) {
    return a.created == b.created && isSame(a.archive, b.archive) &&
           std::equal(a.files.begin(), a.files.end(), b.files.begin(), b.files.end(),
                      [](const KvTSealedFile& one, const KvTSealedFile& other) { return isSame(one, other); });
}

bool isSafe(std::string_view name) {
    return whyUnsafe(name).empty();
}

/// A safe name leads to one file below the folder that it is taken in, and each of its folders has a safe name, too.
void checkSafeName(const std::string& name) {
    const std::u8string text(name.begin(), name.end());
    const fs::path path(text);
    require(path.is_relative() && !path.has_root_path() && path.has_filename(), "A safe name is that of a file below.");
    require(*path.begin() != fs::path(".."), "A safe name leads out of no folder.");
    require(path.lexically_normal().generic_u8string() == text, "A safe name is the only one of its file.");
    require(wideToUtf8(utf8ToWide(name.c_str()).c_str()) == name, "A safe name is the same as wide text.");
    require(isSafe(lowerCaseOf(name)), "A safe name is safe in another case.");
    require(isSafe(name + "/" + name), "Safe names make a safe name.");
    for (std::size_t end = name.find('/'); end != std::string::npos; end = name.find('/', end + 1)) {
        require(isSafe(name.substr(0, end)) && isSafe(name.substr(end + 1)), "The parts of a safe name are safe.");
    }
}

void checkName(const std::string& name) {
    const bool canBePacked = name.size() <= longestPackedName;
    const std::string first = foldedCaseOf(name.substr(0, name.find('/')));
    const bool isTaken = first == manifestName || first == signatureName;
    require(faultsOfNames({{.name = name}}).empty() == (isSafe(name) && canBePacked && !isTaken),
            "A file can be in an archive if its name is safe, not too long and not that of the manifest.");
    if (isSafe(name)) {
        checkSafeName(name);
    }
}

/// The files can be beside each other in a folder of any system, and in a package.
void checkFiles(const KvTManifest& manifest) {
    std::set<std::string> names{std::string(manifestName), std::string(signatureName)};
    std::uint64_t size = 0;
    for (const KvTSealedFile& file : manifest.files) {
        checkName(file.name);
        require(isSafe(file.name), "All names of a manifest are safe.");
        require(names.insert(foldedCaseOf(file.name)).second, "The names of a manifest differ in more than case.");
        size += file.size;
        const auto packed = readHeader(headerOf({file.name, file.size, manifest.created}));
        require(packed && packed->name == file.name && packed->size == file.size && packed->time == manifest.created,
                "A package can have every file of a manifest.");
    }
    require(manifest.size() == size, "The size of an archive is that of its files.");
    for (const std::string& name : names) {
        for (std::size_t end = name.find('/'); end != std::string::npos; end = name.find('/', end + 1)) {
            require(!names.contains(name.substr(0, end)), "No file of a manifest is the folder of another one.");
        }
    }
}

void checkWritten(const KvTManifest& manifest) {
    require(momentOf(textOfMoment(manifest.created)) == manifest.created, "A time is read as it is written.");
    const std::string text = textOf(manifest);
    std::string reason;
    const std::optional<KvTManifest> again = parseManifest(text, reason);
    require(again && isSame(*again, manifest), "A manifest that was written is the same manifest.");
    require(textOf(*again) == text, "A manifest that was written is written the same again.");
}

} // namespace

/// The text of a manifest; it is taken for the name of a file, too.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkName(text);
    std::string reason;
    const std::optional<KvTManifest> manifest = parseManifest(text, reason);
    std::string reasonAgain;
    const std::optional<KvTManifest> again = parseManifest(text, reasonAgain);
    require(manifest.has_value() == again.has_value() && reason == reasonAgain, "A text is judged the same each time.");
    require(manifest.has_value() == reason.empty(), "A manifest that is refused has a reason, and no other one has.");
    if (manifest) {
        require(isSame(*manifest, *again), "A manifest is read the same each time.");
        checkFiles(*manifest);
        checkWritten(*manifest);
    }
    return 0;
}
