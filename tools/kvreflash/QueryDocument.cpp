#include "QueryDocument.h"

#include "DocumentText.h"
#include "TextConversions.h"

#include <memory>
#include <string_view>

namespace {

using namespace KvNReflasher;
using KvNJson::json;

json textValue(const std::wstring& text) {
    return toUtf8(text);
}

json archiveRecord(KvIReflasher& session) {
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session.getArchiveInfo(name, version, product, format, variant);
    json record = json::makeObject();
    record.set("archiveName", textValue(name));
    record.set("archiveVersion", textValue(version));
    record.set("productName", textValue(product));
    record.set("formatVersion", textValue(format));
    record.set("archiveVariant", textValue(variant));
    return record;
}

json fileRecords(KvIReflasher& session) {
    KvTArchiveFileInfo* records = nullptr;
    std::uint32_t count = 0;
    session.getArchiveFiles(records, count);
    const std::unique_ptr<KvTArchiveFileInfo[]> owned(records);
    json files = json::makeArray();
    for (std::uint32_t index = 0; index < count; ++index) {
        json record = json::makeObject();
        record.set("name", std::string_view(owned[index].name));
        record.set("version", std::string_view(owned[index].version));
        files.append(std::move(record));
    }
    return files;
}

json elementRecord(const KvTUpdateElementInfo& element) {
    json record = json::makeObject();
    record.set("index", element.index);
    record.set("boardType", textValue(element.boardType));
    record.set("serialNumber", element.serialNumber);
    record.set("boardName", textValue(element.boardName));
    record.set("unitPath", textValue(element.unitPath));
    record.set("slot", element.slot);
    record.set("slotCount", element.slotCount);
    record.set("displayName", textValue(element.displayName));
    record.set("typeName", textValue(element.typeName));
    record.set("isFileSystemElement", element.isFileSystemElement);
    record.set("valid", element.valid);
    record.set("active", element.active);
    record.set("installedVersion", textValue(element.installedVersion));
    record.set("custom", element.custom);
    record.set("phase", element.phase);
    record.set("hasArchiveFile", element.hasArchiveFile);
    record.set("archiveFileIndex", element.archiveFileIndex);
    record.set("availableVersion", textValue(element.availableVersion));
    record.set("checksumMismatch", element.checksumMismatch);
    record.set("disabled", element.disabled);
    return record;
}

json elementRecords(KvIReflasher& session) {
    KvTUpdateElementInfo* records = nullptr;
    std::uint32_t count = 0;
    session.getUpdateElements(records, count);
    const std::unique_ptr<KvTUpdateElementInfo[]> owned(records);
    json elements = json::makeArray();
    for (std::uint32_t index = 0; index < count; ++index) {
        elements.append(elementRecord(owned[index]));
    }
    return elements;
}

} // namespace

std::string queryDocument(KvIReflasher& session, std::uint32_t mode) {
    json document = json::makeObject();
    if (mode != showTargetElements) {
        document.set("archive", archiveRecord(session));
        document.set("files", fileRecords(session));
    }
    if (mode != showArchiveContent) {
        document.set("elements", elementRecords(session));
    }
    return documentText(document);
}
