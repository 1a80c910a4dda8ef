#include "TargetLook.h"

#include "ErrorEntries.h"
#include "KvCPreparation.h"
#include "MessageCapture.h"
#include "OwnedErrorList.h"
#include "PlanValue.h"

#include <string_view>
#include <unordered_map>

using namespace KvNReflasher;

namespace {

/// All elements of the kind that the session looks at: what an update has changed may pass other filters.
KvTOptions optionsOfLook(KvTOptions options) {
    options.mode = showTargetElements;
    options.verbose = false;
    options.boardTypeFilter.clear();
    options.serialNumberFilter.clear();
    options.elementNameFilter.clear();
    return options;
}

void takeDown(const KvCTargetInventory& inventory, const KvTPlan& plan, KvTLook& look) {
    std::unordered_map<std::string, const KvTUpdateElement*> found;
    for (const KvTUpdateElement& element : inventory.elements()) {
        found.emplace(element.elementAddress.toString().view(), &element);
    }
    for (const KvTPlannedElement& planned : plan.elements) {
        const auto place = planned.isListed() ? found.find(planned.address) : found.end();
        look.elements.push_back(place != found.end() ? std::optional(installedOn(*place->second)) : std::nullopt);
    }
}

} // namespace

KvTLook lookAtTarget(const KvTOptions& options, const KvTPlan& plan) {
    const KvTOptions lookOptions = optionsOfLook(options);
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    const KvCMessageCapture messages;
    KvCPreparation target(messages.writer(), lookOptions, *errors);
    KvTLook look;
    look.succeeded = target.connect();
    look.message = target.verdict().message;
    if (look.succeeded) {
        takeDown(target.inventory(), plan, look);
    }
    target.inventory().release();
    look.errors = errorEntriesOf(*errors);
    return look;
}
