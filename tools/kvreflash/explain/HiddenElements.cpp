#include "HiddenElements.h"

#include "PlannedTarget.h"

#include <array>
#include <optional>
#include <set>
#include <utility>

namespace {

using KvNReflasher::KvTOptions;

/// Display names and addresses of what a session with these options sees; nothing when it cannot.
std::optional<std::vector<KvTHiddenElement>> seenWith(const KvTOptions& options) {
    PlannedTarget target(options, KvNReflasher::showTargetElements);
    if (!target.prepare()) {
        return std::nullopt;
    }
    std::vector<KvTHiddenElement> seen;
    for (const KvTUpdateElement& element : target.preparation().inventory().elements()) {
        seen.push_back(
            {std::string(element.displayName.view()), std::string(element.elementAddress.toString().view()), {}});
    }
    return seen;
}

KvTOptions withoutFilters(KvTOptions options) {
    options.boardTypeFilter.clear();
    options.serialNumberFilter.clear();
    options.elementNameFilter.clear();
    return options;
}

/// What one filter alone hides is hidden by it, whatever the others do.
void markHidden(std::vector<KvTHiddenElement>& elements, const KvTOptions& alone, KvEHiddenBy reason) {
    std::set<std::string> seen;
    for (const bool configuration : {false, true}) {
        KvTOptions options = alone;
        options.configurationElements = configuration;
        for (const KvTHiddenElement& element : seenWith(options).value_or(std::vector<KvTHiddenElement>())) {
            seen.insert(element.address);
        }
    }
    for (KvTHiddenElement& element : elements) {
        if (seen.count(element.address) == 0) {
            element.hiddenBy.push_back(reason);
        }
    }
}

void markFiltered(std::vector<KvTHiddenElement>& elements, const KvTOptions& options) {
    constexpr std::array<std::pair<std::string KvTOptions::*, KvEHiddenBy>, 3> filters{
        {{&KvTOptions::boardTypeFilter, KvEHiddenBy::boardTypeFilter},
         {&KvTOptions::serialNumberFilter, KvEHiddenBy::serialNumberFilter},
         {&KvTOptions::elementNameFilter, KvEHiddenBy::elementNameFilter}}};
    for (const auto& [filter, reason] : filters) {
        if (!(options.*filter).empty()) {
            KvTOptions alone = withoutFilters(options);
            alone.*filter = options.*filter;
            markHidden(elements, alone, reason);
        }
    }
}

} // namespace

std::vector<KvTHiddenElement> hiddenElements(const KvTOptions& options) {
    KvTOptions all = withoutFilters(options);
    auto elements = seenWith(all);
    all.configurationElements = !all.configurationElements;
    auto others = seenWith(all);
    if (!elements || !others) {
        return {};
    }
    for (KvTHiddenElement& element : *others) {
        element.hiddenBy.push_back(KvEHiddenBy::configuration);
        elements->push_back(std::move(element));
    }
    markFiltered(*elements, options);
    std::erase_if(*elements, [](const KvTHiddenElement& element) { return element.hiddenBy.empty(); });
    return std::move(*elements);
}
