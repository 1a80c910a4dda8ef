#include "ExplanationDocument.h"

#include "DocumentText.h"
#include "ExplanationCodes.h"
#include "KnownValues.h"

#include <utility>

namespace {

using KvNJson::json;

/// The version's text and how it is read; null when it is not known.
json versionRecord(const KvCVersion& version) {
    if (!isKnown(version)) {
        return {};
    }
    json record = json::makeObject();
    record.set("text", version.getAsString());
    record.set("major", std::uint32_t{version.getMar()});
    record.set("minor", std::uint32_t{version.getMir()});
    record.set("maintenance", std::uint32_t{version.getMai()});
    record.set("servicePackBuild", std::uint32_t{version.getSpb()});
    record.set("servicePackNumber", std::uint32_t{version.getSpn()});
    record.set("patchLevel", std::uint32_t{version.getPlv()});
    return record;
}

json fileRecord(const KvTArchiveFile& file) {
    json record = json::makeObject();
    record.set("index", file.descriptionIndex);
    record.set("name", file.name);
    record.set("version", versionRecord(file.version));
    record.set("checksumCrc32", file.checksumCrc32 == unknownValue ? json() : json(file.checksumCrc32));
    record.set("mode", file.mode == upgradeMode ? "upgrade" : "standard");
    return record;
}

json triedRecord(const KvTTriedEntry& entry, const KvTArchiveFile& file) {
    json record = json::makeObject();
    record.set("index", file.descriptionIndex);
    record.set("name", file.name);
    record.set("failedTest", entry.failedTest == KvEMatchTest::none ? json() : json(codeOf(entry.failedTest)));
    record.set("archiveValue", entry.archiveValue);
    record.set("elementValue", entry.elementValue);
    return record;
}

template <typename Reason>
json codes(const std::vector<Reason>& reasons) {
    json list = json::makeArray();
    for (const Reason reason : reasons) {
        list.append(codeOf(reason));
    }
    return list;
}

json elementRecord(const KvTExplanation& explanation, const std::vector<KvTArchiveFile>& files) {
    const KvTUpdateElement& element = *explanation.element;
    json tried = json::makeArray();
    for (const KvTTriedEntry& entry : explanation.tried) {
        tried.append(triedRecord(entry, files[entry.file]));
    }
    json record = json::makeObject();
    record.set("index", element.index);
    record.set("displayName", element.displayName);
    record.set("name", element.elementAddress.toString().isEmpty() ? json() : json(element.name));
    record.set("installedVersion", versionRecord(element.version));
    record.set("installedChecksumCrc32", element.hasChecksum ? json(element.checksumCrc32) : json());
    record.set("triedEntries", std::move(tried));
    record.set("entriesForOtherBoardTypes", static_cast<std::uint64_t>(explanation.otherBoardCount));
    record.set("chosenEntry", explanation.file != nullptr ? fileRecord(*explanation.file) : json());
    record.set("decision", explanation.decision ? codeOf(*explanation.decision) : "no-entry");
    record.set("disabledBy", codes(explanation.disabledBy));
    record.set("phase", explanation.file != nullptr && !element.disabled ? json(element.phase) : json());
    return record;
}

json hiddenRecord(const KvTHiddenElement& element) {
    json record = json::makeObject();
    record.set("displayName", std::string_view(element.displayName));
    record.set("address", std::string_view(element.address));
    record.set("hiddenBy", codes(element.hiddenBy));
    return record;
}

} // namespace

std::string explanationDocument(const std::vector<KvTExplanation>& explanations,
                                const std::vector<KvTArchiveFile>& files, const std::vector<KvTHiddenElement>& hidden) {
    json elements = json::makeArray();
    for (const KvTExplanation& explanation : explanations) {
        elements.append(elementRecord(explanation, files));
    }
    json hiddenRecords = json::makeArray();
    for (const KvTHiddenElement& element : hidden) {
        hiddenRecords.append(hiddenRecord(element));
    }
    json document = json::makeObject();
    document.set("elements", std::move(elements));
    document.set("hiddenElements", std::move(hiddenRecords));
    return documentText(document);
}
