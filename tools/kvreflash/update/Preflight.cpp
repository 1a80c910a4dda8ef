#include "Preflight.h"

#include "ArchivePaths.h"
#include "EntryProperties.h"
#include "Files.h"
#include "UpdateFileReaders.h"

#include <set>

namespace {

bool canBeRead(const std::wstring& path) {
    const FileStream file = openForReading(path);
    char byte = 0;
    return file != nullptr && (std::fread(&byte, 1, 1, file.get()) == 1 || std::ferror(file.get()) == 0);
}

std::string textOf(const KvCVersion& version) {
    return std::string(version.getAsString().view());
}

/// What the header of the file tells otherwise than the description.
void compareHeader(const std::wstring& path, const KvTArchiveFile& file, std::vector<std::string>& findings) {
    KvTUpdateFileHeader header;
    if (readUpdateFile(path, header) != KvEReadStatus::success) {
        return; // a plain file tells nothing of itself
    }
    const std::string name(file.name.view());
    if (header.checksum != unknownValue && file.checksumCrc32 != unknownValue &&
        header.checksum != file.checksumCrc32) {
        findings.push_back(name + ": its checksum is " + std::to_string(header.checksum) + ", the description says " +
                           std::to_string(file.checksumCrc32));
    }
    const KvNJson::jsonView version = EntryProperties(file.description.view())[KvEProperty::version];
    if (version.is_string() && header.version != unknownVersion() && header.version != file.version) {
        findings.push_back(name + ": its version is " + textOf(header.version) + ", the description says " +
                           textOf(file.version));
    }
}

} // namespace

std::vector<std::string> preflightFindings(const KvCFirmwareArchive& archive, const KvNReflasher::KvTOptions& options,
                                           const std::vector<KvTPlannedElement>& elements) {
    std::set<std::uint32_t> indices;
    for (const KvTPlannedElement& element : elements) {
        if (element.isUpdated()) {
            indices.insert(element.file);
        }
    }
    std::vector<std::string> findings;
    for (const std::uint32_t index : indices) {
        const KvTArchiveFile& file = archive.files()[index];
        const std::wstring path = updateFilePath(options, file.name);
        if (!pathExists(path)) {
            findings.push_back(std::string(file.name.view()) + ": not found");
        } else if (!canBeRead(path)) {
            findings.push_back(std::string(file.name.view()) + ": cannot be read");
        } else {
            compareHeader(path, file, findings);
        }
    }
    return findings;
}
