#include "Selection.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

using namespace KvNReflasher;

namespace {

std::string didYouMean(const std::string& name) {
    return ", did you mean '" + name + "'?";
}

/// What may have been meant by `name`: the display name of the element that the inventory calls so, or what is spelled
/// most like it.
std::string suggestionForElement(const std::string& name, const KvTPlan& plan) {
    const auto named = std::find_if(plan.elements.begin(), plan.elements.end(),
                                    [&name](const KvTPlannedElement& element) { return element.name == name; });
    return named != plan.elements.end() ? didYouMean(named->displayName) : suggestionFor(name, namesOfElements(plan));
}

/// Why no element was disabled.
std::string faultOf(const KvTPlan& plan, const KvTDisabling& disabling, const std::string& element) {
    if (disabling.elements.empty()) {
        return "the target has no element '" + element + "'" + suggestionForElement(element, plan);
    }
    std::string fault = "several elements are called '" + element + "':";
    for (const std::uint32_t index : disabling.elements) {
        fault.append(" ").append(std::to_string(index));
    }
    return fault;
}

/// A filter, and the value of an element that it is compared with.
struct Filter {
    const char* option;
    std::string KvTOptions::*words;
    std::string (*valueOf)(const KvTHiddenElement& element);
};
constexpr std::array filters = {
    Filter{"--board-type", &KvTOptions::boardTypeFilter,
           [](const KvTHiddenElement& element) { return element.boardType; }},
    Filter{"--serial-number", &KvTOptions::serialNumberFilter,
           [](const KvTHiddenElement& element) { return std::to_string(element.serialNumber); }},
    Filter{"--element", &KvTOptions::elementNameFilter, [](const KvTHiddenElement& element) { return element.name; }}};

bool hasFilters(const KvTOptions& options) {
    return std::any_of(filters.begin(), filters.end(),
                       [&](const Filter& filter) { return !(options.*filter.words).empty(); });
}

std::vector<std::string> wordsOf(const std::string& list) {
    constexpr const char* separators = ", ";
    std::vector<std::string> words;
    for (std::size_t begin = list.find_first_not_of(separators); begin != std::string::npos;) {
        const std::size_t end = std::min(list.find_first_of(separators, begin), list.size());
        words.push_back(list.substr(begin, end - begin));
        begin = list.find_first_not_of(separators, end);
    }
    return words;
}

/// What is said about the words of a filter that no element of the target has.
std::string unknownWords(const Filter& filter, const KvTOptions& options, const std::vector<KvTHiddenElement>& hidden) {
    std::vector<std::string> values;
    values.reserve(hidden.size());
    for (const KvTHiddenElement& element : hidden) {
        values.push_back(filter.valueOf(element));
    }
    std::string text;
    for (const std::string& word : wordsOf(options.*filter.words)) {
        if (std::find(values.begin(), values.end(), word) == values.end()) {
            text.append("; ").append(filter.option).append(": nothing has '").append(word).append("'");
            text.append(suggestionFor(word, values));
        }
    }
    return text;
}

} // namespace

std::string suggestionFor(const std::string& name, const std::vector<std::string>& names) {
    const std::string nearest = nearestName(name, names);
    return nearest.empty() ? std::string() : didYouMean(nearest);
}

std::vector<std::string> namesOfElements(const KvTPlan& plan) {
    std::vector<std::string> names;
    for (const KvTPlannedElement& element : plan.elements) {
        names.push_back(element.displayName);
        names.push_back(element.isListed() ? element.address : element.targetPath);
    }
    return names;
}

KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements) {
    std::string faults;
    for (const std::string& element : elements) {
        const KvTDisabling disabling = session.disableElement(element);
        if (!disabling.isDone()) {
            faults.append(faults.empty() ? "--disable: " : "; ").append(faultOf(*session.plan(), disabling, element));
        }
    }
    return faults.empty() ? KvTVerdict() : KvTVerdict{KvEFailure::selection, std::move(faults)};
}

KvTVerdict verdictOfFilters(const KvTPlan& plan, const KvTOptions& options,
                            const std::vector<KvTHiddenElement>& hidden) {
    if (!hasFilters(options) || !plan.elements.empty()) {
        return {};
    }
    std::string message = "no element of the target passes the filters";
    for (const Filter& filter : filters) {
        message += unknownWords(filter, options, hidden);
    }
    return {KvEFailure::selection, std::move(message)};
}
