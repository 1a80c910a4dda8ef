#include "Report.h"

#include "DocumentText.h"
#include "KnownValues.h"

#include <utility>

namespace {

using KvNJson::json;

json versionOrNull(const KvCVersion& version) {
    return isKnown(version) ? json(version.getAsString()) : json();
}

json checksumOrNull(const std::optional<std::uint32_t>& checksum) {
    return checksum ? json(*checksum) : json();
}

json installedRecord(const KvTInstalled& installed) {
    json record = json::makeObject();
    record.set("version", versionOrNull(installed.version));
    record.set("checksumCrc32", checksumOrNull(installed.checksum));
    record.set("valid", installed.valid);
    record.set("active", installed.active);
    return record;
}

json entryRecord(const KvTPlannedElement& element) {
    json record = json::makeObject();
    record.set("file", std::string_view(element.fileName));
    record.set("version", versionOrNull(element.availableVersion));
    record.set("checksumCrc32", checksumOrNull(element.availableChecksum));
    return record;
}

json afterRecord(const KvTReport& report, const KvTPlannedElement& element) {
    if (!report.after) {
        return {};
    }
    const auto found = report.after->find(element.address);
    return found != report.after->end() ? installedRecord(found->second) : json();
}

json elementRecord(const KvTReport& report, const KvTPlannedElement& element) {
    json record = json::makeObject();
    record.set("index", element.index);
    record.set("displayName", std::string_view(element.displayName));
    record.set("address", std::string_view(element.address));
    record.set("before", installedRecord(element.installed));
    record.set("entry", element.file != noArchiveFile ? entryRecord(element) : json());
    record.set("upToDate", element.upToDate);
    record.set("disabled", element.disabled);
    record.set("phase", element.isUpdated() ? json(element.phase) : json());
    record.set("outcome", wordFor(report.outcomeOf(element)));
    record.set("after", afterRecord(report, element));
    const KvTVerifiedElement* verified = report.verificationOf(element);
    record.set("verification", verified != nullptr ? json(wordsFor(verified->result)) : json());
    return record;
}

json archiveRecord(const KvTReport& report) {
    const bool isRead = report.archive.has_value();
    const KvTArchiveInfo archive = report.archive.value_or(KvTArchiveInfo());
    json record = json::makeObject();
    record.set("folder", std::string_view(report.archiveFolder));
    record.set("archiveName", archive.archiveName);
    record.set("archiveVersion", isRead ? archive.archiveVersion.getAsString() : KvCString());
    record.set("productName", archive.productName);
    record.set("archiveVariant", archive.archiveVariant);
    return record;
}

} // namespace

std::string reportDocument(const KvTReport& report) {
    json target = json::makeObject();
    target.set("given", std::string_view(report.target));
    target.set("address", std::string_view(report.address));
    json elements = json::makeArray();
    for (const KvTPlannedElement& element : report.elements) {
        elements.append(elementRecord(report, element));
    }
    json document = json::makeObject();
    document.set("command", report.isUpdate ? "update" : "plan");
    document.set("toolVersion", std::string_view(report.toolVersion));
    document.set("begin", std::string_view(timeText(report.begin)));
    document.set("end", std::string_view(timeText(report.end)));
    document.set("target", std::move(target));
    document.set("archive", archiveRecord(report));
    document.set("exitCode", static_cast<std::uint32_t>(report.result));
    document.set("elements", std::move(elements));
    document.set("messages", std::string_view(report.messages));
    return documentText(document);
}
