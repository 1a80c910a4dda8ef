#include "QueryDocument.h"

#include "DocumentText.h"
#include "SessionQueries.h"
#include "TextConversions.h"

#include <string_view>
#include <utility>

namespace {

using namespace KvNReflasher;
using KvNJson::json;

json textValue(const std::wstring& text) {
    return toUtf8(text);
}

json archiveRecord(KvIReflasher& session) {
    const KvTArchiveTexts texts = archiveTextsOf(session);
    json record = json::makeObject();
    record.set("archiveName", textValue(texts.name));
    record.set("archiveVersion", textValue(texts.version));
    record.set("productName", textValue(texts.productName));
    record.set("formatVersion", textValue(texts.formatVersion));
    record.set("archiveVariant", textValue(texts.variant));
    return record;
}

json fileRecords(KvIReflasher& session) {
    json files = json::makeArray();
    for (const KvTArchiveFileInfo& file : filesOf(session)) {
        json record = json::makeObject();
        record.set("name", std::string_view(file.name));
        record.set("version", std::string_view(file.version));
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
    json elements = json::makeArray();
    for (const KvTUpdateElementInfo& element : elementsOf(session)) {
        elements.append(elementRecord(element));
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
