#include "UnmatchedElements.h"

#include "EntryProperties.h"

#include <algorithm>
#include <limits>

namespace {

using KvNJson::jsonView;

/// Texts that are known from the start.
constexpr std::uint32_t noText = 0;
constexpr std::uint32_t anyLocationText = 1;

/// The place of the variant, a text, among the compared values.
constexpr std::size_t variantIndex = 0;

template <typename Items>
void forgetAll(Items& items) {
    std::for_each(items.begin(), items.end(), [](auto& item) { item.reset(); });
}

} // namespace

std::size_t UnmatchedElements::PlaceHash::operator()(const Place& place) const {
    constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15; // spreads the parts over the whole word
    constexpr unsigned half = 32;
    const std::uint64_t parts = (std::uint64_t{place.boardType} << half | place.address) * multiplier;
    return static_cast<std::size_t>((parts ^ parts >> half) + (place.isFileSystemElement ? 1U : 0U));
}

UnmatchedElements::UnmatchedElements(std::list<KvTUpdateElement>& elements)
    : textNumbers_{{"", noText}, {anyLocation, anyLocationText}} {
    places_.reserve(elements.size());
    for (KvTUpdateElement& element : elements) {
        const Place place = {.boardType = numberOf(element.boardType.view()),
                             .address =
                                 element.isFileSystemElement ? numberOf(element.location.view()) : element.elementId,
                             .isFileSystemElement = element.isFileSystemElement};
        places_[place].emplace(Values{numberOf(element.boardVariant.view()), element.boardId, element.hwCompatibilityId,
                                      element.swCompatibilityId},
                               &element);
    }
    lastEntry_.resize(textNumbers_.size(), entryNumber_);
}

std::uint32_t UnmatchedElements::numberOf(std::string_view text) {
    return textNumbers_.try_emplace(text, static_cast<std::uint32_t>(textNumbers_.size())).first->second;
}

/// Nothing for a text that no element has.
std::optional<std::uint32_t> UnmatchedElements::knownNumberOf(std::string_view text) const {
    const auto found = textNumbers_.find(text);
    return found != textNumbers_.end() ? std::optional(found->second) : std::nullopt;
}

std::vector<KvTUpdateElement*> UnmatchedElements::take(const KvTArchiveFile& file) {
    std::vector<KvTUpdateElement*> taken;
    ++entryNumber_;
    forgetAll(inherited_);
    for (const KvTEntrySelection& selection : selectionsOf(file)) {
        takeSelection(selection, taken);
    }
    return taken;
}

/// Of each board type only the first selection of an entry counts, whatever its other values.
void UnmatchedElements::takeSelection(const KvTEntrySelection& selection, std::vector<KvTUpdateElement*>& taken) {
    forgetAll(own_);
    forEachScalar(selection.boardType, [&](jsonView scalar) {
        const std::optional<std::uint32_t> boardType = knownNumberOf(scalar.get_string());
        if (boardType && lastEntry_[*boardType] != entryNumber_) {
            lastEntry_[*boardType] = entryNumber_;
            takeBoardType(*boardType, selection, taken);
        }
    });
}

void UnmatchedElements::takeBoardType(std::uint32_t boardType, const KvTEntrySelection& selection,
                                      std::vector<KvTUpdateElement*>& taken) {
    if (!selection.hasTargetPath) {
        if (selection.id) {
            takeFrom({boardType, *selection.id, false}, selection, taken);
        }
    } else if (selection.targetPath) {
        takeFrom({boardType, anyLocationText, true}, selection, taken);
        if (const std::optional<std::uint32_t> path = knownNumberOf(*selection.targetPath)) {
            takeFrom({boardType, *path, true}, selection, taken);
        }
    }
}

void UnmatchedElements::takeFrom(const Place& place, const KvTEntrySelection& selection,
                                 std::vector<KvTUpdateElement*>& taken) {
    const auto found = places_.find(place);
    if (found == places_.end()) {
        return;
    }
    std::multimap<Values, KvTUpdateElement*>& elements = found->second;
    const AllowedNumbers allowed = allowedBy(selection);
    auto element = elements.begin();
    while (element != elements.end()) {
        ++comparisonCount_;
        const std::optional<Values> next = firstAllowedFrom(element->first, allowed);
        if (!next) {
            return;
        }
        if (*next == element->first) {
            taken.push_back(element->second);
            element = elements.erase(element);
        } else {
            element = elements.lower_bound(*next);
        }
    }
}

UnmatchedElements::AllowedNumbers UnmatchedElements::allowedBy(const KvTEntrySelection& selection) {
    AllowedNumbers allowed{};
    for (std::size_t index = 0; index < valueCount; ++index) {
        const KvTSelectedValue& selected = selection.*comparedValues[index];
        std::optional<Numbers>& numbers = selected.inherited ? inherited_[index] : own_[index];
        if (!numbers) {
            numbers = numbersOf(selected.value, index);
        }
        allowed[index] = &*numbers;
    }
    return allowed;
}

/// What is absent stands for an element's default.
UnmatchedElements::Numbers UnmatchedElements::numbersOf(jsonView value, std::size_t valueIndex) const {
    if (!value.is_valid()) {
        return {0};
    }
    Numbers numbers;
    forEachScalar(value, [&](jsonView scalar) {
        if (const std::optional<std::uint32_t> number = numberOf(scalar, valueIndex)) {
            numbers.push_back(*number);
        }
    });
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

/// Nothing for what equals no element's value: among the variants null stands for the empty one.
std::optional<std::uint32_t> UnmatchedElements::numberOf(jsonView scalar, std::size_t valueIndex) const {
    if (valueIndex == variantIndex) {
        if (scalar.is_null()) {
            return noText;
        }
        const std::string_view text = scalar.get_string();
        return text.empty() ? std::nullopt : knownNumberOf(text);
    }
    if (!scalar.is_number_unsigned() || scalar.get_unsigned() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(scalar.get_unsigned());
}

/// The smallest combination of allowed numbers that is not less than `values`; nothing when there is none.
std::optional<UnmatchedElements::Values> UnmatchedElements::firstAllowedFrom(Values values,
                                                                             const AllowedNumbers& allowed) {
    const auto isEmpty = [](const Numbers* numbers) { return numbers->empty(); };
    if (std::any_of(allowed.begin(), allowed.end(), isEmpty)) {
        return std::nullopt;
    }
    std::size_t index = 0;
    while (index < valueCount && std::binary_search(allowed[index]->begin(), allowed[index]->end(), values[index])) {
        ++index;
    }
    if (index == valueCount) {
        return values;
    }
    // The last of the values up to `index` that can grow does; those behind it begin anew.
    for (std::size_t growing = index + 1; growing-- > 0;) {
        const auto next = std::upper_bound(allowed[growing]->begin(), allowed[growing]->end(), values[growing]);
        if (next != allowed[growing]->end()) {
            values[growing] = *next;
            for (std::size_t rest = growing + 1; rest < valueCount; ++rest) {
                values[rest] = allowed[rest]->front();
            }
            return values;
        }
    }
    return std::nullopt;
}
