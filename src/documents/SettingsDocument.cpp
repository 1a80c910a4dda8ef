#include "DocumentFrame.h"
#include "JsonValues.h"
#include "KvDocuments.h"

// What is in force on a machine, and from where.

namespace KvNReflasher {

namespace {

KvCJsonText settingRecord(const KvCJsonText& value, KvESettingSource source) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("value", value);
    record.set("source", codeOf(source));
    return record;
}

/// Null for no folder.
KvCJsonText folderRecord(const KvTSetting<std::optional<std::string>>& setting) {
    return settingRecord(setting.value ? textValue(*setting.value) : KvCJsonText(), setting.source);
}

KvCJsonText fileRecord(const KvTSettings& settings) {
    KvCJsonText record = KvCJsonText::makeObject();
    record.set("path", settings.file);
    record.set("state", codeOf(settings.fileState));
    return record;
}

} // namespace

std::string settingsDocument(const KvTSettings& settings, const KvTVerdict& verdict) {
    KvCJsonText document = framedDocument("settings", verdict);
    document.set("file", fileRecord(settings));
    document.set("requirePlan", settingRecord(settings.requirePlan.value, settings.requirePlan.source));
    document.set("trust", folderRecord(settings.trust));
    document.set("journal", folderRecord(settings.journal));
    return documentText(document);
}

} // namespace KvNReflasher
