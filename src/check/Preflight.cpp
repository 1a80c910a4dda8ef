#include "Preflight.h"

#include "ArchivePaths.h"
#include "DescriptionFile.h"
#include "Files.h"
#include "HeaderComparison.h"
#include "UpdateFileReaders.h"

#include <set>

namespace {

std::string versionTextOf(const KvCVersion& version) {
    return std::string(version.getAsString().view());
}

/// What the header tells otherwise than the description.
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
}

/// ": it is a pipe, not a regular file"; empty if the kind of the file is not the reason.
std::string reasonOf(const std::wstring& path) {
    const std::string fault = faultOfKind(path);
    return fault.empty() ? fault : ": it is " + fault;
}

void checkUpdateFile(const std::wstring& path, const KvTArchiveFile& file, std::vector<std::string>& findings) {
    if (!pathExists(path)) {
        findings.push_back(std::string(file.name.view()) + ": not found");
        return;
    }
    KvTUpdateFileHeader header;
    switch (readUpdateFile(path, header)) {
    case KvEReadStatus::success:
        compareHeader(header, file, findings);
        break;
    case KvEReadStatus::notThisKind:
        break; // a plain file tells nothing of itself
    case KvEReadStatus::cannotOpen:
        findings.push_back(std::string(file.name.view()) + ": cannot be read" + reasonOf(path));
        break;
    }
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
    std::vector<std::string> findings;
    for (const std::uint32_t index : indices) {
        const KvTArchiveFile& file = archive.files()[index];
        checkUpdateFile(updateFilePath(options, file.name), file, findings);
    }
    return findings;
}
