#include "HiddenElements.h"

#include "InventoryWalk.h"
#include "MessageCapture.h"
#include "OwnedErrorList.h"

#include <array>
#include <iterator>
#include <list>
#include <set>
#include <string>
#include <utility>

namespace {

using KvNReflasher::KvEHiddenBy;
using KvNReflasher::KvTHiddenElement;
using KvNReflasher::KvTOptions;

/// Walks one tree with different options, each time by the rules of a session.
class TreeViews {
public:
    explicit TreeViews(const KvCInventoryItem& root) : root_(root) {}

    /// What a session with these options sees, without reasons.
    [[nodiscard]] std::vector<KvTHiddenElement> seenWith(const KvTOptions& options) const {
        const KvCOwnedErrorList dropped = KvCOwnedErrorList::create();
        const KvCMessageCapture messages; // the session itself has printed them
        std::list<KvTUpdateElement> elements;
        KvTNodeAddresses nodes;
        walkInventory(*dropped, messages.writer(), options, root_, elements, nodes);
        std::vector<KvTHiddenElement> seen;
        for (const KvTUpdateElement& element : elements) {
            seen.push_back({.displayName = std::string(element.displayName.view()),
                            .address = std::string(element.elementAddress.toString().view()),
                            .hiddenBy = {},
                            .boardType = std::string(element.boardType.view()),
                            .serialNumber = element.serialNumber,
                            .name = std::string(element.name.view())});
        }
        return seen;
    }

    /// The addresses of all elements that `alone`, options with one filter, lets through.
    [[nodiscard]] std::set<std::string> addressesWith(KvTOptions alone) const {
        std::set<std::string> addresses;
        for (const bool configuration : {false, true}) {
            alone.configurationElements = configuration;
            for (KvTHiddenElement& element : seenWith(alone)) {
                addresses.insert(std::move(element.address));
            }
        }
        return addresses;
    }

private:
    const KvCInventoryItem& root_;
};

KvTOptions withoutFilters(KvTOptions options) {
    options.verbose = false;
    options.boardTypeFilter.clear();
    options.serialNumberFilter.clear();
    options.elementNameFilter.clear();
    return options;
}

/// What one filter alone hides is hidden by it, whatever the others do.
void markFiltered(const TreeViews& tree, const KvTOptions& options, std::vector<KvTHiddenElement>& elements) {
    constexpr std::array<std::pair<std::string KvTOptions::*, KvEHiddenBy>, 3> filters{
        {{&KvTOptions::boardTypeFilter, KvEHiddenBy::boardTypeFilter},
         {&KvTOptions::serialNumberFilter, KvEHiddenBy::serialNumberFilter},
         {&KvTOptions::elementNameFilter, KvEHiddenBy::elementNameFilter}}};
    for (const auto& [filter, reason] : filters) {
        if ((options.*filter).empty()) {
            continue;
        }
        KvTOptions alone = withoutFilters(options);
        alone.*filter = options.*filter;
        const std::set<std::string> seen = tree.addressesWith(alone);
        for (KvTHiddenElement& element : elements) {
            if (seen.count(element.address) == 0) {
                element.hiddenBy.push_back(reason);
            }
        }
    }
}

} // namespace

std::vector<KvTHiddenElement> hiddenElementsOf(const KvCInventoryItem& root, const KvTOptions& options) {
    const TreeViews tree(root);
    KvTOptions all = withoutFilters(options);
    std::vector<KvTHiddenElement> elements = tree.seenWith(all);
    all.configurationElements = !all.configurationElements;
    std::vector<KvTHiddenElement> others = tree.seenWith(all);
    for (KvTHiddenElement& element : others) {
        element.hiddenBy.push_back(KvEHiddenBy::configuration);
    }
    elements.insert(elements.end(), std::make_move_iterator(others.begin()), std::make_move_iterator(others.end()));
    markFiltered(tree, options, elements);
    std::erase_if(elements, [](const KvTHiddenElement& element) { return element.hiddenBy.empty(); });
    return elements;
}
