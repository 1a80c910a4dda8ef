#include "TargetCapture.h"

#include "Conclusion.h"
#include "CountedNoun.h"
#include "EmulatedFolder.h"
#include "InventoryDescription.h"
#include "ToolOutput.h"
#include "ToolSession.h"

#include <optional>
#include <string>
#include <utility>

using namespace KvNReflasher;

namespace {

using KvNJson::json;

void describeTree(const KvCInventoryItem& root, void* context) {
    static_cast<std::optional<KvTInventoryDescription>*>(context)->emplace(describeInventory(root));
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

/// The one session of a capture.
class TargetCapture {
public:
    explicit TargetCapture(const KvTCommandLine& line) : line_(line), session_(line) {}

    [[nodiscard]] KvTVerdict perform() {
        session_.keepMessages();
        session_->setTreeVisitor(describeTree, &inventory_);
        if (!session_.prepare() || !inventory_) {
            writeText(stderr, session_.messages());
            return session_.verdict();
        }
        if (line_.options.verbose) {
            writeText(stdout, session_.messages());
        }
        for (const std::string& warning : inventory_->warnings) {
            say("warning: " + warning);
        }
        if (!inventory_->root) {
            return {KvEFailure::target, "the target's root item is of a kind that an emulated target cannot have"};
        }
        return write();
    }

private:
    [[nodiscard]] KvTVerdict write() {
        const std::string& address = session_->plan()->targetAddress;
        const std::string description = targetDescription(address, std::move(*inventory_->root));
        if (std::string fault = writeNewTarget(line_.captureFolder, description); !fault.empty()) {
            return {KvEFailure::output, std::move(fault)};
        }
        writeText(stdout, "Captured " + address + ": " + counted(inventory_->itemCount, "item") + " with " +
                              counted(inventory_->parameterCount, "parameter") + ".\nRehearse with --emulate '" +
                              line_.captureFolder + "'.\n");
        return {};
    }

    const KvTCommandLine& line_;
    std::optional<KvTInventoryDescription> inventory_;
    ToolSession session_;
};

} // namespace

ExitCode captureTarget(const KvTCommandLine& line) {
    if (std::string fault = faultOfNewTarget(line.captureFolder); !fault.empty()) {
        return conclude({KvEFailure::output, std::move(fault)});
    }
    return conclude(TargetCapture(line).perform());
}
