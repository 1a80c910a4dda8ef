#include "ArchiveCheck.h"

#include "FindingDocuments.h"
#include "KvIArchive.h"
#include "TextConversions.h"
#include "ToolOutput.h"

#include <memory>
#include <string>
#include <vector>

ExitCode checkArchive(const KvTCommandLine& line) {
    const std::unique_ptr<const KvIArchive> archive(
        KvIArchive::createInstance(line.options.archiveFolder, line.options.descriptionFileName));
    const std::vector<KvNReflasher::KvTFinding> findings = archive->findings();
    std::string file(toUtf8(line.options.archiveFolder).view());
    file.append("/").append(toUtf8(line.options.descriptionFileName).view());
    writeText(stdout, line.json ? findingDocument(findings, file) : findingText(findings, file));
    const bool isBad = line.strict ? !findings.empty() : countOf(findings, KvNReflasher::KvESeverity::error) != 0;
    return isBad ? exitFailed : exitSuccess;
}
