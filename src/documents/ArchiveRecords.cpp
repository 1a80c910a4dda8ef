#include "ArchiveRecords.h"

#include "JsonValues.h"

#include <cstdint>

namespace KvNReflasher {

KvCJsonText identityRecord(const KvTArchiveIdentity& identity) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("archiveName", identity.archiveName);
    record.set("archiveVersion", identity.archiveVersion);
    record.set("productName", identity.productName);
    record.set("formatVersion", identity.formatVersion);
    record.set("archiveVariant", identity.archiveVariant);
    return record;
}

namespace {

/// Null for an empty text, which is none.
KvCJsonText textOrNull(const std::string& text) {
    return text.empty() ? KvCJsonText() : textValue(text);
}

} // namespace

KvCJsonText releaseRecord(const std::optional<KvTRelease>& release) {
    if (!release) {
        return {};
    }
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("seal", codeOf(release->seal));
    record.set("manifestSha256", textOrNull(release->manifestDigest));
    record.set("created", textOrNull(release->created));
    record.set("signer", textOrNull(release->signer));
    record.set("keyKind", textOrNull(release->keyKind));
    record.set("keyFingerprint", textOrNull(release->keyFingerprint));
    record.set("trustFolder", textOrNull(release->trustFolder));
    record.set("unsealedAccepted", release->isUnsealedAccepted);
    return record;
}

KvCJsonText entryRecord(const KvTArchiveEntry& entry) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("name", entry.fileName);
    record.set("version", versionOrNull(entry.version));
    record.set("index", entry.descriptionIndex);
    record.set("fileIndex", entry.fileIndex);
    record.set("checksumCrc32", valueOrNull(entry.checksumCrc32));
    record.set("mode", codeOf(entry.mode));
    record.set("sequence", entry.sequence);
    return record;
}

KvCJsonText findingRecord(const KvTFinding& finding, const std::string& file) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("severity", codeOf(finding.severity));
    record.set("code", finding.code);
    record.set("file", file);
    record.set("line", static_cast<std::uint64_t>(finding.line));
    record.set("column", static_cast<std::uint64_t>(finding.column));
    record.set("path", finding.path);
    record.set("message", finding.message);
    record.set("hint", finding.hint);
    return record;
}

} // namespace KvNReflasher
