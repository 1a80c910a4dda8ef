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

KvCElementIndex::KvCElementIndex(const std::list<KvTUpdateElement>& elements) {
    for (const KvTUpdateElement& element : elements) {
        KvTComparedValue address = std::uint64_t{element.elementId};
        if (element.isFileSystemElement) {
            address = element.location.view();
        }
        Values values;
        std::transform(comparedProperties.begin(), comparedProperties.end(), values.begin(),
                       [&](const KvTComparedProperty& property) { return property.valueOf(element); });
        boardTypes_[element.boardType.view()][address].emplace(values, &element);
    }
}

std::vector<const KvTUpdateElement*> KvCElementIndex::take(const KvTEntrySelection& selection, const Test& test) {
    Taken taken;
    for (const std::string_view boardType : selection.boardTypes) {
        const auto found = boardTypes_.find(boardType);
        if (found == boardTypes_.end()) {
            continue;
        }
        Places& places = found->second;
        if (const auto& path = selection.address.targetPath; path) {
            takeFrom(places, std::string_view(anyLocation), selection, test, taken);
            takeFrom(places, *path, selection, test, taken);
        } else if (selection.address.id) {
            takeFrom(places, std::uint64_t{*selection.address.id}, selection, test, taken);
        }
    }
    return taken;
}

/// Tries either the elements that have one of the allowed combinations of values, or all elements of the place if these
/// are not more.
void KvCElementIndex::takeFrom(Places& places, const KvTComparedValue& address, const KvTEntrySelection& selection,
                               const Test& test, Taken& taken) {
    const auto found = places.find(address);
    if (found == places.end()) {
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
