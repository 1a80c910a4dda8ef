#include "SettingsText.h"

#include "PathTexts.h"
#include "TextTable.h"
#include "Texts.h"

using namespace KvNReflasher;

namespace {

const char* wordFor(KvESettingSource source) {
    switch (source) {
    case KvESettingSource::commandLine:
        return "command line";
    case KvESettingSource::settingsFile:
        return "settings file";
    case KvESettingSource::builtIn:
        return "default";
    }
    return "";
}

const char* wordFor(KvESettingsFile state) {
    switch (state) {
    case KvESettingsFile::read:
        return "";
    case KvESettingsFile::absent:
        return " (absent)";
    case KvESettingsFile::ignored:
        return " (ignored)";
    }
    return "";
}

std::vector<std::string> folderRow(const char* name, const KvTSetting<std::optional<std::string>>& folder) {
    return {name, folder.value.value_or("none"), wordFor(folder.source)};
}

} // namespace

std::string settingsText(const KvTSettings& settings) {
    const KvTSetting<bool>& requirePlan = settings.requirePlan;
    return "Settings file: " + visibleInLine(quotedPath(settings.file)) + wordFor(settings.fileState) + "\n\n" +
           tableText({{"Setting", "Value", "Source"},
                      {"require-plan", requirePlan.value ? "true" : "false", wordFor(requirePlan.source)},
                      folderRow("trust", settings.trust),
                      folderRow("journal", settings.journal)});
}
