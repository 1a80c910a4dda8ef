#include "TargetCapture.h"

#include "CallJudgement.h"
#include "CountedNoun.h"
#include "DocumentText.h"
#include "EmulatedFolder.h"
#include "ErrorReport.h"
#include "InventoryDescription.h"
#include "KvCInventoryManager.h"
#include "KvCPreparation.h"
#include "MessageCapture.h"
#include "OwnedErrorList.h"
#include "ScannedTree.h"
#include "ToolOutput.h"

#include <optional>

namespace {

using KvNJson::json;

/// A connection to the target whose inventory is to be read. Its messages are kept.
class InventorySource {
public:
    explicit InventorySource(const KvNReflasher::KvTOptions& options) : options_(options) {}

    /// Finds the target as every session does. False when that failed; messages() says why.
    [[nodiscard]] bool connect() { return preparation_.connect(*errors_); }

    /// Reads the inventory. False when that failed; messages() says why.
    [[nodiscard]] bool scan(ScannedTree& tree) {
        const bool isScanned = callSucceeds(*errors_, [&] {
            KvCInventoryManager::getInstance()->scan(*errors_, preparation_.inventory().rootHandle(), tree.out());
        });
        if (isScanned && tree.root() != nullptr) {
            return true;
        }
        messages_.writer().print(L"ERROR: Cannot read target device information.\n");
        printErrorReport(messages_.writer(), options_, *errors_, reportIndentation);
        return false;
    }

    [[nodiscard]] const KvCString& address() const { return preparation_.targetAccess().ipAddress(); }
    [[nodiscard]] const std::string& messages() const { return messages_.text(); }

private:
    MessageCapture messages_;
    const KvNReflasher::KvTOptions& options_;
    OwnedErrorList errors_ = OwnedErrorList::create();
    KvCPreparation preparation_{messages_.writer(), options_};
};

std::string targetDescription(const KvCString& address, json inventory) {
    json addresses = json::makeArray();
    addresses.append(address);
    json target = json::makeObject();
    target.set("addresses", std::move(addresses));
    target.set("inventory", std::move(inventory));
    return documentText(target);
}

/// The target's description; nothing when it cannot be had. `summary` receives what there is to say of it.
std::optional<std::string> readTarget(InventorySource& source, std::string& summary) {
    ScannedTree tree;
    if (!source.connect() || !source.scan(tree)) {
        return std::nullopt;
    }
    KvTInventoryDescription inventory = describeInventory(*tree.root());
    for (const std::string& warning : inventory.warnings) {
        say("warning: " + warning);
    }
    if (!inventory.root) {
        say("the target's root item is of a kind that an emulated target cannot have");
        return std::nullopt;
    }
    summary = std::string(source.address().view()) + ": " + counted(inventory.itemCount, "item") + " with " +
              counted(inventory.parameterCount, "parameter");
    return targetDescription(source.address(), std::move(*inventory.root));
}

} // namespace

ExitCode captureTarget(const KvTCommandLine& line) {
    if (!canHoldNewTarget(line.captureFolder)) {
        return exitFailed;
    }
    InventorySource source(line.options);
    std::string summary;
    const std::optional<std::string> description = readTarget(source, summary);
    if (!description) {
        writeText(stderr, source.messages());
        return exitFailed;
    }
    if (line.options.verbose) {
        writeText(stdout, source.messages());
    }
    if (!writeNewTarget(line.captureFolder, *description)) {
        return exitFailed;
    }
    writeText(stdout, "Captured " + summary + ".\nRehearse with --emulate '" + line.captureFolder + "'.\n");
    return exitSuccess;
}
