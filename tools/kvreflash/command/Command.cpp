#include "Command.h"

#include <algorithm>

void Command::addOptions(CommandSyntax& syntax) {
    for (OptionGroup* const group : groups()) {
        group->addTo(syntax);
    }
    common.addTo(syntax);
}

bool Command::usesSettings() {
    const std::vector<OptionGroup*> options = groups();
    return std::any_of(options.begin(), options.end(), [](const OptionGroup* group) { return group->usesSettings(); });
}

std::string Command::takeSettings() {
    std::string fault;
    if (!usesSettings()) {
        return fault;
    }
    if (common.ignoresSettings) {
        settings = settingsOfTheToolAlone();
    } else {
        fault = readSettings(settings);
    }
    for (OptionGroup* const group : groups()) {
        group->takeSettings(settings);
    }
    return fault;
}

SessionRequest Command::request(KvNReflasher::KvEMode mode) {
    SessionRequest request;
    request.options.mode = mode;
    for (const OptionGroup* const group : groups()) {
        group->applyTo(request);
    }
    common.applyTo(request);
    return request;
}
