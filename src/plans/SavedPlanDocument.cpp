#include "Crypto.h"
#include "DocumentFrame.h"
#include "JsonValues.h"
#include "KvCStringConversion.h"
#include "RecordReading.h"
#include "SavedPlanRecord.h"

namespace KvNReflasher {

namespace {

constexpr std::string_view formatName = "kvreflash.saved-plan";
constexpr std::uint32_t formatVersion = 1;

std::wstring wideOf(const std::string& text) {
    return toWide(KvCString(std::string_view(text)));
}

} // namespace

std::string savedPlanDocument(const KvTSavedPlan& plan) {
    KvCJsonText document = KvCJsonText::makeObject();
    document.set("format", formatRecord(formatName, formatVersion));
    setPlanBasis(document, plan);
    setPlanElements(document, plan.plan);
    const std::string text = documentText(document);
    document.set("digest", hexOf(sha256Of(bytesOf(text))));
    return documentText(document);
}

/// What cannot be read as it was written shows in the text that the value has then, whatever was changed.
std::optional<KvTSavedPlan> readSavedPlan(const std::string& document, std::string& reason) {
    const KvNJson::json parsed = KvNJson::json::parse(document);
    const KvNJson::jsonView format = parsed.view().find("format");
    if (parsed.is_invalid() || textOf(format.find("name")) != formatName) {
        reason = "it is not a saved plan";
        return std::nullopt;
    }
    if (numberOf(format.find("version")) != formatVersion) {
        reason = "it was saved by another version of the tool, in a format that is not known";
        return std::nullopt;
    }
    KvTSavedPlan plan;
    readPlanBasis(parsed.view(), plan);
    readPlanElements(parsed.view(), plan);
    if (savedPlanDocument(plan) != document) {
        reason = "it was changed after it was saved";
        return std::nullopt;
    }
    return plan;
}

KvTOptions optionsFor(const KvTSavedPlan& plan, const std::wstring& archiveFolder) {
    KvTOptions options{};
    options.mode = performUpdate;
    options.target = wideOf(plan.target);
    options.archiveFolder = archiveFolder.empty() ? wideOf(plan.archiveFolder) : archiveFolder;
    options.descriptionFileName = wideOf(plan.descriptionFileName);
    options.boardTypeFilter = plan.options.boardTypeFilter;
    options.serialNumberFilter = plan.options.serialNumberFilter;
    options.elementNameFilter = plan.options.elementNameFilter;
    options.configurationElements = plan.options.configurationElements;
    options.disableCustomElements = plan.options.disableCustomElements;
    options.forceUpdate = plan.options.forceUpdate;
    return options;
}

} // namespace KvNReflasher
