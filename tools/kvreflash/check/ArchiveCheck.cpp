#include "ArchiveCheck.h"

#include "ArchiveFindingSearch.h"
#include "FindingDocuments.h"
#include "TextConversions.h"
#include "ToolOutput.h"

ExitCode checkArchive(const KvTCommandLine& line) {
    const std::vector<KvTFinding> findings = findingsOfArchive(line.options);
    std::string file(toUtf8(line.options.archiveFolder).view());
    file.append("/").append(toUtf8(line.options.descriptionFileName).view());
    writeText(stdout, line.json ? findingDocument(findings, file) : findingText(findings, file));
    const bool isBad = line.strict ? !findings.empty() : countOf(findings, KvESeverity::error) != 0;
    return isBad ? exitFailed : exitSuccess;
}
