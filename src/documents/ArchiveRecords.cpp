#include "ArchiveRecords.h"

#include "JsonValues.h"

#include <cstdint>

namespace KvNReflasher {

using KvNJson::json;

json identityRecord(const KvTArchiveIdentity& identity) {
    json record = json::makeObject();
    record.set("archiveName", textValue(identity.archiveName));
    record.set("archiveVersion", textValue(identity.archiveVersion));
    record.set("productName", textValue(identity.productName));
    record.set("formatVersion", textValue(identity.formatVersion));
    record.set("archiveVariant", textValue(identity.archiveVariant));
    return record;
}

namespace {

/// Null for an empty text, which is none.
json textOrNull(const std::string& text) {
    return text.empty() ? json() : textValue(text);
}

} // namespace

json releaseRecord(const std::optional<KvTRelease>& release) {
    if (!release) {
        return {};
    }
    json record = json::makeObject();
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

json entryRecord(const KvTArchiveEntry& entry) {
    json record = json::makeObject();
    record.set("name", textValue(entry.fileName));
    record.set("version", versionOrNull(entry.version));
    record.set("index", entry.descriptionIndex);
    record.set("fileIndex", entry.fileIndex);
    record.set("checksumCrc32", valueOrNull(entry.checksumCrc32));
    record.set("mode", codeOf(entry.mode));
    record.set("sequence", entry.sequence);
    return record;
}

json findingRecord(const KvTFinding& finding, const std::string& file) {
    json record = json::makeObject();
    record.set("severity", codeOf(finding.severity));
    record.set("code", textValue(finding.code));
    record.set("file", textValue(file));
    record.set("line", static_cast<std::uint64_t>(finding.line));
    record.set("column", static_cast<std::uint64_t>(finding.column));
    record.set("path", textValue(finding.path));
    record.set("message", textValue(finding.message));
    record.set("hint", textValue(finding.hint));
    return record;
}

} // namespace KvNReflasher
