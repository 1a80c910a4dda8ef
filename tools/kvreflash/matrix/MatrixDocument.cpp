#include "MatrixDocument.h"

#include "DocumentText.h"
#include "KnownValues.h"

#include <string_view>
#include <utility>

namespace {

using KvNJson::json;

json archiveRecord(const KvTArchiveInfo& info) {
    json record = json::makeObject();
    record.set("archiveName", info.archiveName);
    record.set("archiveVersion", info.archiveVersion.getAsString());
    record.set("productName", info.productName);
    record.set("formatVersion", info.formatVersion.getAsString());
    record.set("archiveVariant", info.archiveVariant);
    return record;
}

json versionOrEmptyText(const KvCVersion& version) {
    return isKnown(version) ? version.getAsString() : KvCString();
}

const char* codeOf(KvEElementOutlook outlook) {
    switch (outlook) {
    case KvEElementOutlook::wouldUpdate:
        return "would-update";
    case KvEElementOutlook::upToDate:
        return "up-to-date";
    case KvEElementOutlook::noEntry:
        return "no-entry";
    case KvEElementOutlook::disabled:
        return "disabled";
    }
    return "";
}

json elementRecords(const std::vector<KvTMatrixElement>& elements) {
    json records = json::makeArray();
    for (const KvTMatrixElement& element : elements) {
        json record = json::makeObject();
        record.set("index", element.index);
        record.set("displayName", element.displayName);
        record.set("installedVersion", versionOrEmptyText(element.installedVersion));
        record.set("availableVersion", versionOrEmptyText(element.availableVersion));
        record.set("state", codeOf(element.outlook));
        records.append(std::move(record));
    }
    return records;
}

json targetRecord(const KvTMatrixTarget& target) {
    json record = json::makeObject();
    record.set("folder", std::string_view(target.folder));
    record.set("address", std::string_view(target.address));
    if (target.error) {
        record.set("error", std::string_view(*target.error));
        return record;
    }
    record.set("supported", target.supported);
    record.set("elements", elementRecords(target.elements));
    return record;
}

json entryRecords(const std::vector<KvTMatrixEntry>& entries) {
    json records = json::makeArray();
    for (const KvTMatrixEntry& entry : entries) {
        json record = json::makeObject();
        record.set("index", entry.index);
        record.set("name", entry.name);
        records.append(std::move(record));
    }
    return records;
}

} // namespace

std::string matrixDocument(const KvTArchiveInfo& archive, const std::vector<KvTMatrixTarget>& targets,
                           const std::vector<KvTMatrixEntry>& unmatchedEntries) {
    json targetRecords = json::makeArray();
    for (const KvTMatrixTarget& target : targets) {
        targetRecords.append(targetRecord(target));
    }
    json document = json::makeObject();
    document.set("archive", archiveRecord(archive));
    document.set("targets", std::move(targetRecords));
    document.set("unmatchedEntries", entryRecords(unmatchedEntries));
    return documentText(document);
}
