#include "KvCArchive.h"

#include "ArchiveEntries.h"
#include "ArchiveFindingSearch.h"
#include "KvCFirmwareArchive.h"
#include "MessageCapture.h"

using namespace KvNReflasher;

KvIArchive* KvIArchive::createInstance(const std::wstring& folder, const std::wstring& descriptionFileName) {
    return new KvCArchive(folder, descriptionFileName);
}

KvCArchive::KvCArchive(const std::wstring& folder, const std::wstring& descriptionFileName) {
    options_.archiveFolder = folder;
    options_.descriptionFileName = descriptionFileName;
    options_.mode = showArchiveContent;
}

KvTArchiveContent KvCArchive::content() const {
    const KvCMessageCapture messages;
    KvCFirmwareArchive archive(messages.writer(), options_);
    KvTArchiveContent content;
    if (!archive.readArchiveOrReport()) {
        content.verdict = {.failure = KvEFailure::archive, .message = archive.refusal()};
    }
    content.identity = archiveIdentityOf(archive.info());
    content.entries = archiveEntriesOf(archive.files());
    content.messages = messages.text();
    return content;
}

std::vector<KvTFinding> KvCArchive::findings() const {
    return findingsOfArchive(options_);
}
