#include "ReleasedReading.h"

#include "FileNames.h"
#include "KvCConsoleWriter.h"

#include <set>

using namespace KvNReflasher;

namespace {

/// The update files that are read after the description: all of them or, without an update, those whose checksum it
/// leaves out.
std::set<std::string> updateFilesOf(const KvCFirmwareArchive& archive, KvESealedFiles files) {
    std::set<std::string> names;
    for (const KvTArchiveFile& file : archive.files()) {
        if (files != KvESealedFiles::verified || file.checksumCrc32 == unknownValue) {
            names.emplace(file.name.view());
        }
    }
    return names;
}

} // namespace

bool KvCReleasedReading::read(KvCFirmwareArchive& archive, KvESealedFiles files) {
    isAccepted_ = open() && readDescription(archive, files) && readUpdateFiles(archive);
    return isAccepted_;
}

bool KvCReleasedReading::open() {
    return check_.open() || refuse();
}

bool KvCReleasedReading::readDescription(KvCFirmwareArchive& archive, KvESealedFiles files) {
    if (isSealed()) {
        return readSealedDescription(archive, files);
    }
    const bool isRead = archive.readDescriptionOrReport();
    refusal_ = archive.refusal();
    return isRead;
}

/// Each file is verified before the archive is read from it; whatever is copied is read nowhere else.
bool KvCReleasedReading::readSealedDescription(KvCFirmwareArchive& archive, KvESealedFiles files) {
    const bool isCopied = check_.isPackage() || files == KvESealedFiles::copied;
    if (isCopied && !check_.makeCopies()) {
        return refuse();
    }
    const std::set<std::string> description{std::string(toUtf8(options_.descriptionFileName).view())};
    if (!check_.lists(description) || !check_.take(description)) {
        (void)check_.takeRest(); // all faults are named at once
        return refuse();
    }
    if (isCopied) {
        archive.readFrom({check_.folderOfCopies(), check_.topFiles()});
    }
    if (!archive.readDescriptionOrReport()) {
        refusal_ = archive.refusal();
        return false;
    }
    (void)check_.lists(updateFilesOf(archive, KvESealedFiles::copied));
    (void)check_.take(updateFilesOf(archive, files));
    (void)check_.take(otherDescriptions());
    return check_.takeRest() || refuse();
}

bool KvCReleasedReading::readUpdateFiles(KvCFirmwareArchive& archive) {
    const bool isRead = archive.readUpdateFilesOrReport();
    refusal_ = archive.refusal();
    return isRead;
}

/// A check looks into these, too.
std::set<std::string> KvCReleasedReading::otherDescriptions() const {
    std::set<std::string> names;
    for (const std::string& name : check_.topFiles()) {
        if (lowerCaseOf(name).ends_with(".json")) {
            names.insert(name);
        }
    }
    return names;
}

bool KvCReleasedReading::refuse() {
    writer_.print(L"ERROR: The firmware archive is not accepted:\n");
    for (const std::string& fault : check_.faults()) {
        writer_.print(L"\t%hs\n", fault.c_str());
        refusal_.append(refusal_.empty() ? "the firmware archive is not accepted: " : "; ").append(fault);
    }
    return false;
}

std::optional<KvTRelease> KvCReleasedReading::release() const {
    return isAccepted_ ? std::optional(check_.release()) : std::nullopt;
}
