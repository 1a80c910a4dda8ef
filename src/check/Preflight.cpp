#include "Preflight.h"

#include "DescriptionFile.h"
#include "Files.h"
#include "FindingList.h"
#include "FolderFiles.h"
#include "HeaderComparison.h"
#include "UpdateFileReaders.h"

#include <set>
#include <string_view>

namespace {

std::string versionTextOf(const KvCVersion& version) {
    return std::string(version.getAsString().view());
}

/// Fields in which the header differs from the description.
void compareHeader(const KvTUpdateFileHeader& header, const KvTArchiveFile& file, std::vector<std::string>& findings) {
    const std::string name(file.name.view());
    if (!header.isWhole) {
        findings.push_back(name + ": its header cannot be read");
    }
    if (tellsOtherChecksum(header, file)) {
        findings.push_back(name + ": its checksum is " + std::to_string(header.checksum) + ", the description says " +
                           std::to_string(file.checksumCrc32));
    }
    if (file.hasOwnVersion && tellsOtherVersion(header, file)) {
        findings.push_back(name + ": its version is " + versionTextOf(header.version) + ", the description says " +
                           versionTextOf(file.version));
    }
    for (const KvTExcludedId& excluded : excludedIds(header, file)) {
        findings.push_back(name + ": it is for the " + excluded.kind + " compatibility identifier " + excluded.range +
                           ", the description allows " + std::to_string(excluded.id));
    }
}

/// ": it is a pipe, not a regular file"; empty if the kind of the file is not the reason.
std::string reasonOf(const std::wstring& path) {
    const std::string fault = faultOfKind(path);
    return fault.empty() ? fault : ": it is " + fault;
}

std::string absenceOf(std::string_view name, KvCFolderFiles& folder) {
    const std::string_view nearest = folder.nearest(name);
    return std::string(name) + ": not found" + (nearest.empty() ? "" : "; did you mean " + inQuotes(nearest) + "?");
}

void checkUpdateFile(const std::wstring& path, const KvTArchiveFile& file, KvCFolderFiles& folder,
                     std::vector<std::string>& findings) {
    const std::string name(file.name.view());
    if (!pathExists(path)) {
        findings.push_back(absenceOf(name, folder));
        return;
    }
    KvTUpdateFileHeader header;
    const KvEReadStatus status = readUpdateFile(path, header);
    if (status == KvEReadStatus::cannotOpen) {
        findings.push_back(name + ": cannot be read" + reasonOf(path));
    } else if (header.extent == KvEFileExtent::empty) {
        findings.push_back(name + ": it is empty");
    } else if (header.extent == KvEFileExtent::cutInHeader) {
        findings.push_back(name + ": it ends within its header");
    } else if (status == KvEReadStatus::success) {
        compareHeader(header, file, findings);
    } // a plain file states nothing of itself
}

} // namespace

std::vector<std::string> preflightFindings(const KvCFirmwareArchive& archive, const KvNReflasher::KvTOptions& options,
                                           const KvNReflasher::KvTPlan& plan) {
    std::set<std::uint32_t> indices;
    for (const KvNReflasher::KvTPlannedElement& element : plan.elements) {
        if (element.decision.update && element.entry) {
            indices.insert(element.entry->fileIndex);
        }
    }
    std::vector<std::string_view> names;
    for (const KvTArchiveFile& file : archive.files()) {
        names.push_back(file.name.view());
    }
    KvCFolderFiles folder(archive, options.descriptionFileName, names);
    std::vector<std::string> findings;
    for (const std::uint32_t index : indices) {
        const KvTArchiveFile& file = archive.files()[index];
        checkUpdateFile(archive.pathOf(file.name), file, folder, findings);
    }
    return findings;
}
