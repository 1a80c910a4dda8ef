#include "CaptureCommand.h"

#include "EmulatedFolder.h"
#include "InventoryDescription.h"
#include "PathTexts.h"
#include "Texts.h"
#include "ToolOutput.h"

#include <optional>
#include <string_view>
#include <utility>

using namespace KvNReflasher;

namespace {

using KvNJson::json;

void describeTree(const KvCInventoryItem& root, void* context) {
    static_cast<std::optional<DescribedInventory>*>(context)->emplace(describeInventory(root));
}

std::string targetDescription(const std::string& address, json inventory) {
    constexpr int indentation = 4;
    json addresses = json::makeArray();
    addresses.append(std::string_view(address));
    json target = json::makeObject();
    target.set("addresses", std::move(addresses));
    target.set("inventory", std::move(inventory));
    return target.dump(indentation, ' ', false, KvNJson::error_handler_t::replace) + "\n";
}

KvTVerdict write(DescribedInventory inventory, const std::string& address, const std::string& folder) {
    const std::string description = targetDescription(address, std::move(*inventory.root));
    if (std::string fault = writeNewTarget(folder, description); !fault.empty()) {
        return {KvEFailure::output, std::move(fault)};
    }
    writeText(stdout, "Captured " + address + ": " + counted(inventory.itemCount, "item") + " with " +
                          counted(inventory.parameterCount, "parameter") + ".\nRehearse with: --emulate " +
                          visibleInLine(quotedPath(folder)) + "\n");
    return {};
}

/// Reads the inventory in a session and writes it to the folder. Says what had to be left out.
KvTVerdict capture(const SessionRequest& request, const std::string& folder) {
    std::optional<DescribedInventory> inventory;
    ToolSession session(request);
    session.keepMessages();
    session->setTreeVisitor(describeTree, &inventory);
    if (!session.prepare() || !inventory) {
        writeText(stderr, session.messages());
        return session.verdict();
    }
    if (request.options.verbose) {
        writeText(stdout, session.messages());
    }
    for (const std::string& warning : inventory->warnings) {
        say("warning: " + warning);
    }
    if (!inventory->root) {
        return {KvEFailure::target, "the target's root item is of a kind that an emulated target cannot have"};
    }
    return write(std::move(*inventory), session->plan()->targetAddress, folder);
}

} // namespace

void FolderArgument::addTo(CommandSyntax& syntax) {
    syntax.addArgument("DIR", "The folder to be made; an existing one must be empty", keptIn(folder), Occurs::once);
}

ExitCode CaptureCommand::run() {
    if (std::string fault = faultOfNewTarget(argument.folder); !fault.empty()) {
        return conclude({KvEFailure::output, std::move(fault)});
    }
    return conclude(capture(request(connectOnly), argument.folder));
}
