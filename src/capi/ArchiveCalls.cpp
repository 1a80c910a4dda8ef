#include "ClientRecords.h"
#include "Handles.h"
#include "KvDocuments.h"
#include "KvIArchive.h"
#include "KvTComparison.h"
#include "Records.h"
#include "TextConversion.h"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

// Archives without a target.

using namespace KvNReflasher;

namespace {

/// An archive of a client in C.
class KvCArchiveHandle : public KvCHandled {
public:
    explicit KvCArchiveHandle(const kvr_archive_options& options)
        : place{pathOf(options.archive), pathOf(options.description)}, release{pathOf(options.trust_folder),
                                                                               (options.flags & KVR_ACCEPT_UNSEALED) !=
                                                                                   0},
          isReleaseAsked((options.flags & KVR_RELEASE) != 0 || !release.trustFolder.empty()) {
        if (place.descriptionFileName.empty()) {
            place.descriptionFileName = L"archive.json";
        }
        archive.reset(isReleaseAsked ? KvIArchive::createInstance(place.folder, place.descriptionFileName, release)
                                     : KvIArchive::createInstance(place.folder, place.descriptionFileName));
        if (archive == nullptr) {
            throw std::bad_alloc();
        }
    }

    [[nodiscard]] std::string document(std::uint32_t kind) const;

    KvTArchivePlace place;
    KvTReleaseOptions release;
    bool isReleaseAsked;
    std::unique_ptr<KvIArchive> archive;

    // What was found last.
    std::optional<KvTArchiveContent> content;
    std::optional<std::vector<KvTFinding>> findings;
    std::optional<KvTComparison> comparison;
    std::string documentText;
};

/// What was asked for before. Throws KvCCallFailure otherwise.
template <typename Value>
Value& known(std::optional<Value>& value) {
    if (!value) {
        throw KvCCallFailure(KVR_ERROR_ORDER, "the archive was not asked for that before");
    }
    return *value;
}

template <typename Value>
const Value& known(const std::optional<Value>& value) {
    return known(const_cast<std::optional<Value>&>(value));
}

template <typename Operation>
std::int32_t callAlone(kvr_archive* archive, Operation&& operation) {
    return guarded([&] {
        const auto handle = objectOf<KvCArchiveHandle>(archive);
        const KvCExclusiveUse use(*handle);
        return std::forward<Operation>(operation)(*handle);
    });
}

std::int32_t resultOf(bool isGood) {
    return isGood ? KVR_SUCCESS : KVR_FAILED;
}

bool hasErrors(const std::vector<KvTFinding>& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const KvTFinding& finding) { return finding.severity == KvESeverity::error; });
}

kvr_archive_info recordOf(const KvTArchiveContent& content) {
    static const KvTRelease none;
    const KvTRelease& release = content.release ? *content.release : none;
    kvr_archive_info record{};
    record.entries = static_cast<std::uint32_t>(content.entries.size());
    record.failure = static_cast<std::uint32_t>(content.verdict.failure);
    record.seal = static_cast<std::uint32_t>(release.seal);
    record.message = content.verdict.message.c_str();
    record.archive_name = content.identity.archiveName.c_str();
    record.archive_version = content.identity.archiveVersion.c_str();
    record.product_name = content.identity.productName.c_str();
    record.format_version = content.identity.formatVersion.c_str();
    record.archive_variant = content.identity.archiveVariant.c_str();
    record.manifest_digest = release.manifestDigest.c_str();
    record.created = release.created.c_str();
    record.signer = release.signer.c_str();
    record.key_fingerprint = release.keyFingerprint.c_str();
    return record;
}

kvr_finding recordOf(const KvTFinding& finding) {
    kvr_finding record{};
    record.severity = static_cast<std::uint32_t>(finding.severity);
    record.line = static_cast<std::uint32_t>(finding.line);
    record.column = static_cast<std::uint32_t>(finding.column);
    record.code = finding.code.c_str();
    record.path = finding.path.c_str();
    record.message = finding.message.c_str();
    record.hint = finding.hint.c_str();
    return record;
}

const char* versionOf(const std::optional<KvTComparedEntry>& entry) {
    return entry && entry->entry.version ? entry->entry.version->text.c_str() : "";
}

kvr_change recordOf(const KvTArchiveDifference& difference) {
    kvr_change record{};
    record.change = static_cast<std::uint32_t>(difference.change);
    record.element_id = difference.elementId.value_or(0);
    record.content_changed = difference.isContentChanged ? 1 : 0;
    record.rules_changed = difference.areRulesChanged || difference.isModeChanged ? 1 : 0;
    record.sequence_changed = difference.isSequenceChanged ? 1 : 0;
    record.board_type = difference.boardType.c_str();
    record.target_path = difference.targetPath.c_str();
    record.version_before = versionOf(difference.before);
    record.version_after = versionOf(difference.after);
    return record;
}

std::string KvCArchiveHandle::document(std::uint32_t kind) const {
    switch (kind) {
    case KVR_DOCUMENT_CONTENT:
        return contentDocument(known(content), known(content).verdict);
    case KVR_DOCUMENT_CHECK: {
        const std::wstring file = place.folder + L"/" + place.descriptionFileName;
        const bool isRefused = hasErrors(known(findings));
        const KvTVerdict verdict = isRefused ? KvTVerdict{KvEFailure::archive, "the archive has errors"} : KvTVerdict();
        return checkDocument(known(findings), wideToUtf8(file.c_str()), verdict);
    }
    case KVR_DOCUMENT_COMPARE:
        return compareDocument(known(comparison), nullptr, nullptr, known(comparison).verdict);
    default:
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "there is no such document");
    }
}

} // namespace

std::int32_t KVR_CALL kvr_archive_create(const kvr_archive_options* options, kvr_archive** archive) {
    return guarded([&] {
        requireOut(archive);
        *archive = nullptr;
        *archive = static_cast<kvr_archive*>(addHandle(std::make_shared<KvCArchiveHandle>(recordFrom(options))));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_archive_free(kvr_archive* archive) {
    return freeHandle<KvCArchiveHandle>(archive);
}

std::int32_t KVR_CALL kvr_archive_read(kvr_archive* archive) {
    return callAlone(archive, [](KvCArchiveHandle& handle) {
        handle.content = handle.archive->content();
        return resultOf(handle.content->verdict.isSuccess());
    });
}

std::int32_t KVR_CALL kvr_archive_get_info(kvr_archive* archive, kvr_archive_info* info) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        fill(info, recordOf(known(handle.content)));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_archive_get_entry(kvr_archive* archive, std::uint32_t index, kvr_entry* entry) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        fill(entry, recordOf(itemOf(known(handle.content).entries, index)));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_archive_check(kvr_archive* archive, std::uint32_t* findings) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        handle.findings = handle.archive->findings();
        giveIfWanted(findings, static_cast<std::uint32_t>(handle.findings->size()));
        return resultOf(!hasErrors(*handle.findings));
    });
}

std::int32_t KVR_CALL kvr_archive_get_finding(kvr_archive* archive, std::uint32_t index, kvr_finding* finding) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        fill(finding, recordOf(itemOf(known(handle.findings), index)));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_archive_compare(kvr_archive* archive, kvr_archive* older, std::uint32_t* places) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        const auto before = objectOf<KvCArchiveHandle>(older);
        handle.comparison = compareArchives(before->place, handle.place, handle.release);
        giveIfWanted(places, static_cast<std::uint32_t>(handle.comparison->places.size()));
        const KvTVerdict& verdict = handle.comparison->verdict;
        return verdict.isSuccess() ? KVR_SUCCESS : failed(verdict.message.c_str());
    });
}

std::int32_t KVR_CALL kvr_archive_get_change(kvr_archive* archive, std::uint32_t index, kvr_change* change) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        fill(change, recordOf(itemOf(known(handle.comparison).places, index)));
        return KVR_SUCCESS;
    });
}

std::int32_t KVR_CALL kvr_archive_get_document(kvr_archive* archive, std::uint32_t kind, const char** text) {
    return callAlone(archive, [&](KvCArchiveHandle& handle) {
        requireOut(text);
        handle.documentText = handle.document(kind);
        *text = handle.documentText.c_str();
        return KVR_SUCCESS;
    });
}
