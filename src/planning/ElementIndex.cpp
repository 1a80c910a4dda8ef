#include "ElementIndex.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

/// All combinations of one allowed value of each compared property.
class Combinations {
public:
    explicit Combinations(const KvTEntrySelection& selection) : selection_(selection) {}

    /// How many there are, or `limit` if they are more.
    [[nodiscard]] std::size_t count(std::size_t limit) const {
        std::size_t count = 1;
        for (const KvTComparedProperty& property : comparedProperties) {
            const std::size_t size = (selection_.*property.allowed).size();
            count = size != 0 && count > limit / size ? limit : count * size;
        }
        return std::min(count, limit);
    }

    /// Calls `visit` with each; only if there are any.
    template <typename Values, typename Visit>
    void forEach(Values& values, Visit&& visit, std::size_t property = 0) const {
        if (property == comparedProperties.size()) {
            visit(values);
            return;
        }
        const KvCAllowedValues& allowed = selection_.*comparedProperties[property].allowed;
        for (std::size_t index = 0; index < allowed.size(); ++index) {
            if (const std::optional<KvTComparedValue> value = allowed.at(index)) {
                values[property] = *value;
                forEach(values, visit, property + 1);
            }
        }
    }

private:
    const KvTEntrySelection& selection_;
};

} // namespace

std::size_t KvCElementIndex::PlaceHash::operator()(const Place& place) const {
    constexpr std::size_t multiplier = 31;
    return std::hash<std::string_view>()(place.boardType) * multiplier + std::hash<KvTComparedValue>()(place.address);
}

KvCElementIndex::KvCElementIndex(const std::list<KvTUpdateElement>& elements) {
    places_.reserve(elements.size());
    for (const KvTUpdateElement& element : elements) {
        Place place{.boardType = element.boardType.view(), .address = std::uint64_t{element.elementId}};
        if (element.isFileSystemElement) {
            place.address = element.location.view();
        }
        Values values;
        std::transform(comparedProperties.begin(), comparedProperties.end(), values.begin(),
                       [&](const KvTComparedProperty& property) { return property.valueOf(element); });
        boardTypes_.insert(place.boardType);
        places_[place].emplace(values, &element);
    }
}

std::vector<const KvTUpdateElement*> KvCElementIndex::take(const KvTEntrySelection& selection, const Test& test) {
    Taken taken;
    for (const std::string_view boardType : selection.boardTypes) {
        if (!boardTypes_.contains(boardType)) {
            continue;
        }
        if (const auto& path = selection.address.targetPath; path) {
            takeFrom({boardType, std::string_view(anyLocation)}, selection, test, taken);
            takeFrom({boardType, *path}, selection, test, taken);
        } else if (selection.address.id) {
            takeFrom({boardType, std::uint64_t{*selection.address.id}}, selection, test, taken);
        }
    }
    return taken;
}

/// Tries either the elements that have one of the allowed combinations of values, or all elements of the place if these
/// are not more.
void KvCElementIndex::takeFrom(const Place& place, const KvTEntrySelection& selection, const Test& test, Taken& taken) {
    const auto found = places_.find(place);
    if (found == places_.end()) {
        return;
    }
    Elements& elements = found->second;
    const auto takeIn = [&](Elements::iterator begin, Elements::iterator end) {
        while (begin != end) {
            if (test(*begin->second)) {
                taken.push_back(begin->second);
                begin = elements.erase(begin);
            } else {
                ++begin;
            }
        }
    };
    const Combinations combinations(selection);
    if (combinations.count(elements.size()) == elements.size()) {
        takeIn(elements.begin(), elements.end());
        return;
    }
    Values values;
    combinations.forEach(values, [&](const Values& combination) {
        const auto [begin, end] = elements.equal_range(combination);
        takeIn(begin, end);
    });
}

std::vector<const KvTUpdateElement*> takeMatching(KvCElementIndex& index, const KvTArchiveFile& file) {
    std::vector<const KvTUpdateElement*> taken;
    for (const KvTEntrySelection& selection : file.selections) {
        const auto elements =
            index.take(selection, [&](const KvTUpdateElement& element) { return isMeantFor(selection, element); });
        taken.insert(taken.end(), elements.begin(), elements.end());
    }
    return taken;
}
