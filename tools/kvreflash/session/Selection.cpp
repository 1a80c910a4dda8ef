#include "Selection.h"

#include <cstdint>
#include <utility>

using namespace KvNReflasher;

namespace {

/// Why no element was disabled.
std::string faultOf(const KvTDisabling& disabling, const std::string& element) {
    if (disabling.elements.empty()) {
        return "the target has no element '" + element + "'";
    }
    std::string fault = "several elements are called '" + element + "':";
    for (const std::uint32_t index : disabling.elements) {
        fault.append(" ").append(std::to_string(index));
    }
    return fault;
}

} // namespace

KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements) {
    std::string faults;
    for (const std::string& element : elements) {
        const KvTDisabling disabling = session.disableElement(element);
        if (!disabling.isDone()) {
            faults.append(faults.empty() ? "--disable: " : "; ").append(faultOf(disabling, element));
        }
    }
    return faults.empty() ? KvTVerdict() : KvTVerdict{KvEFailure::selection, std::move(faults)};
}

KvTVerdict verdictOfFilters(const KvTPlan& plan, const KvTOptions& options) {
    const bool hasFilter =
        !options.boardTypeFilter.empty() || !options.serialNumberFilter.empty() || !options.elementNameFilter.empty();
    if (!hasFilter || !plan.elements.empty()) {
        return {};
    }
    return {KvEFailure::selection, "no element of the target passes the filters"};
}
