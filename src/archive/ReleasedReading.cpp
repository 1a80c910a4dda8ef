#include "ReleasedReading.h"

#include "KvCConsoleWriter.h"

using namespace KvNReflasher;

bool KvCReleasedReading::read(KvCFirmwareArchive& archive, KvESealedFiles files) {
    if (!check_.open()) {
        return refuse();
    }
    bool isRead = false;
    if (check_.isSealed() && (check_.isPackage() || files == KvESealedFiles::copied)) {
        isRead = readCopies(archive, files);
    } else if (check_.isSealed() && !check_.takeRest({})) {
        isRead = refuse();
    } else {
        isRead = archive.readArchiveOrReport();
    }
    if (!isRead && refusal_.empty()) {
        refusal_ = archive.refusal();
    }
    isAccepted_ = isRead;
    return isRead;
}

/// What was verified is what is read: no file of the archive is read twice.
bool KvCReleasedReading::readCopies(KvCFirmwareArchive& archive, KvESealedFiles files) {
    if (!check_.makeCopies()) {
        return refuse();
    }
    if (!check_.take(toUtf8(options_.descriptionFileName).view())) {
        (void)check_.takeRest({}); // all faults are named at once
        return refuse();
    }
    archive.readFrom(check_.folderOfCopies());
    if (!archive.readDescriptionOrReport()) {
        return false;
    }
    std::set<std::string> names;
    for (const KvTArchiveFile& file : archive.files()) {
        if (files == KvESealedFiles::copied || file.checksumCrc32 == unknownValue) {
            names.emplace(file.name.view());
        }
    }
    return check_.takeRest(names) ? archive.readUpdateFilesOrReport() : refuse();
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
