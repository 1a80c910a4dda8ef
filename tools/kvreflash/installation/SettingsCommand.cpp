#include "SettingsCommand.h"

#include "KvDocuments.h"
#include "SettingsText.h"
#include "ToolOutput.h"

using namespace KvNReflasher;

ExitCode SettingsCommand::run() {
    writeText(stdout, json.isWanted ? settingsDocument(settings, {}) : settingsText(settings));
    return conclude({});
}
