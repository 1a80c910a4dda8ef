#include "Command.h"

void Command::addOptions(CommandSyntax& syntax) {
    for (OptionGroup* const group : groups()) {
        group->addTo(syntax);
    }
    common.addTo(syntax);
}

SessionRequest Command::request(KvNReflasher::KvEMode mode) {
    SessionRequest request;
    request.options.mode = mode;
    common.applyTo(request);
    for (const OptionGroup* const group : groups()) {
        group->applyTo(request);
    }
    return request;
}
