#include "KvCArchive.h"

#include "ArchiveEntries.h"
#include "ArchiveFindingSearch.h"
#include "FindingTable.h"
#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"
#include "ReleasedReading.h"
#include "WholeFiles.h"

#include <utility>

using namespace KvNReflasher;

namespace {

std::vector<KvTFinding> findingsOf(const std::vector<std::string>& faults) {
    const KvTFindingRow& row = findingRow(KvECheckRule::releaseRefused);
    std::vector<KvTFinding> findings;
    findings.reserve(faults.size());
    for (const std::string& fault : faults) {
        findings.push_back({.severity = row.severity,
                            .code = std::string(row.code),
                            .message = "The archive is not accepted: " + fault + ".",
                            .hint = std::string(row.hint)});
    }
    return findings;
}

} // namespace

KvIArchive* KvIArchive::createInstance(const std::wstring& folder, const std::wstring& descriptionFileName) {
    return new KvCArchive(folder, descriptionFileName);
}

KvIArchive* KvIArchive::createInstance(const std::wstring& folder, const std::wstring& descriptionFileName,
                                       const KvTReleaseOptions& release) {
    return new KvCArchive(folder, descriptionFileName, release);
}

KvCArchive::KvCArchive(const std::wstring& folder, const std::wstring& descriptionFileName,
                       std::optional<KvTReleaseOptions> release)
    : release_(std::move(release)) {
    options_.archiveFolder = folder;
    options_.descriptionFileName = descriptionFileName;
    options_.mode = showArchiveContent;
}

KvTArchiveContent KvCArchive::content() const {
    const KvCMessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), options_);
    std::optional<KvCReleasedReading> reading;
    if (release_) {
        reading.emplace(messages.writer(), options_, *release_);
    }
    KvTArchiveContent content;
    const bool isRead = reading ? reading->read(archive, KvESealedFiles::verified) : archive.readArchiveOrReport();
    if (!isRead) {
        content.verdict = {.failure = KvEFailure::archive, .message = reading ? reading->refusal() : archive.refusal()};
    }
    content.identity = archiveIdentityOf(archive.info());
    content.entries = archiveEntriesOf(archive.files());
    content.messages = messages.text();
    content.release = reading ? reading->release() : std::nullopt;
    return content;
}

std::vector<KvTFinding> KvCArchive::findings() const {
    if (!release_) {
        return findingsOfArchive(options_);
    }
    const KvCMessageCapture messages;
    KvCReleasedReading reading(messages.writer(), options_, *release_);
    if (reading.open() && !reading.isSealed()) {
        return findingsOfArchive(options_);
    }
    KvCFirmwareArchive archive(messages.writer(), options_);
    archive.keepText();
    if (reading.faults().empty()) {
        (void)reading.readDescription(archive, KvESealedFiles::inspected);
    }
    return reading.faults().empty() ? findingsOfText(options_, archive.text(), archive.copy())
                                    : findingsOf(reading.faults());
}
