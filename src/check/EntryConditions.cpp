#include "EntryConditions.h"

#include "EntryProperties.h"

#include <algorithm>

namespace {

/// An absent variant stands for none, an absent number for 0.
constexpr std::array<std::uint64_t, comparedValues.size()> absentValues = {ValueSets::nullValue, 0, 0, 0};

} // namespace

std::uint64_t ValueSets::numberOfScalar(KvNJson::jsonView value) {
    if (value.is_string()) {
        return textNumbers_.try_emplace(value.get_string(), textNumbers_.size() + 1).first->second;
    }
    return value.is_null() ? nullValue : value.get_unsigned();
}

std::uint32_t ValueSets::numberOf(KvNJson::jsonView value, std::uint64_t absent) {
    Values values;
    if (value.is_valid()) {
        forEachScalar(value, [&](KvNJson::jsonView scalar) { values.push_back(numberOfScalar(scalar)); });
    } else {
        values.push_back(absent);
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    const auto [found, isNew] = numbers_.try_emplace(std::move(values), static_cast<std::uint32_t>(sets_.size()));
    if (isNew) {
        const Values& kept = found->first;
        sets_.push_back(kept.empty() ? Set{&kept} : Set{&kept, kept.front(), kept.back()});
    }
    return found->second;
}

bool ValueSets::isWithin(std::uint32_t part, std::uint32_t whole) const {
    if (part == whole || isEmpty(part)) {
        return true;
    }
    const Set& inner = sets_[part];
    const Set& outer = sets_[whole];
    return inner.least >= outer.least && inner.greatest <= outer.greatest &&
           std::includes(outer.values->begin(), outer.values->end(), inner.values->begin(), inner.values->end());
}

KvTConditions EntryConditions::of(const KvTEntrySelection& selection) {
    KvTConditions conditions{};
    for (std::size_t index = 0; index < comparedValues.size(); ++index) {
        const KvTSelectedValue& selected = selection.*comparedValues[index];
        if (!selected.inherited) {
            conditions[index] = sets_.numberOf(selected.value, absentValues[index]);
            continue;
        }
        if (!inherited_[index]) {
            inherited_[index] = sets_.numberOf(selected.value, absentValues[index]);
        }
        conditions[index] = *inherited_[index];
    }
    return conditions;
}
