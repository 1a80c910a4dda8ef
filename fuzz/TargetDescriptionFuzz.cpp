// The description of an emulated target: serving it, reading its inventory, and forgetting it again.

#include "FuzzFolder.h"
#include "InventoryListing.h"
#include "KvCInventoryManager.h"
#include "KvEmulation.h"
#include "KvHostInterface.h"
#include "KvNJson.h"
#include "OwnedErrorList.h"
#include "Property.h"
#include "ServiceState.h"
#include "SessionRun.h"
#include "Transcript.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace KvNReflasher;

constexpr const char* address = "127.0.0.1";

/// True when the description puts faults at calls: then anything may fail, even a release.
bool hasFaults(std::string_view text) {
    const KvNJson::json document = KvNJson::json::parse(text);
    return document.view().find("faults").size() > 0;
}

/// The inventory by the calls of the platform; empty when one of them failed.
std::string scan() {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvCInventoryManager& manager = *KvCInventoryManager::getInstance();
    KvCInventoryRootHandle* root = nullptr;
    std::string listing;
    if (manager.createRootHandleByIpAddressList(*errors, address, root) == 0 && root != nullptr) {
        KvCInventoryItem* tree = nullptr;
        static_cast<void>(manager.scan(*errors, root, tree));
        if (tree != nullptr) {
            listing = listInventory(*tree);
            manager.deleteInventoryTree(tree);
        }
        static_cast<void>(manager.deleteRootHandle(*errors, root));
    }
    return listing;
}

/// What a session reads and prints, and whether the target can be rebooted.
std::string performSession(bool isFaultless) {
    const Transcript transcript;
    KvTOptions options = optionsOfMode(showTargetElements);
    options.verbose = true;
    SessionRun run(options);
    const std::uint32_t status = run.prepare();
    const bool hasRun = run.run();
    std::uint32_t support = 0;
    const bool canReboot = run.session().getRebootSupportStatus(support);
    require(canReboot == (support == 0) && support <= 4, "The reboot support is one of its values.");
    require(status == 0 || run.elements().empty() || !isFaultless, "Without a scan there are no elements.");
    std::string text = std::to_string(status) + std::to_string(int(hasRun)) + std::to_string(support);
    if (canReboot) {
        text += std::to_string(int(run.session().reboot()));
    }
    return text + run.answers() + Transcript::take();
}

/// What the service answers that has no target, and so cannot be reached.
void requireNoTarget() {
    constexpr std::int32_t serviceUnreachable = 33;
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    KvHIMFilterHandle filter = nullptr;
    require(KvHIM_createFilter(*errors, filter, 1) == serviceUnreachable, "No target is served any more.");
}

std::string take(const KvEmulation::KvTServeResult& result) {
    std::string text = result.error;
    for (const std::string& warning : result.warnings) {
        require(!warning.empty(), "A warning says something.");
        text += warning;
    }
    return text;
}

/// Serves the folder and uses the target; the result tells all that could be seen of it.
std::string serveOnce(const FuzzFolder& folder, bool isFaultless) {
    const KvEmulation::KvTServeResult result = KvEmulation::serve(folder.text());
    require(result.served == result.error.empty(), "A description that is refused is told why.");
    require(result.served || result.error.find("target.json: ") != std::string::npos, "The reason names the file.");
    std::string text = take(result);
    if (result.served) {
        text += performSession(isFaultless);
        if (isFaultless) {
            text += scan();
            requireNothingHeld();
        }
    }
    KvEmulation::reset();
    requireNoTarget();
    requireNothingHeld();
    folder.remove("state");
    return text;
}

} // namespace

/// The text of target.json.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    folder.write("target.json", text);
    const bool isFaultless = !hasFaults(text);
    const std::string once = serveOnce(folder, isFaultless);
    // Seldom, for it takes as long again.
    require(size % 8 != 0 || serveOnce(folder, isFaultless) == once,
            "Nothing of a target is left when it is forgotten.");
    return 0;
}
