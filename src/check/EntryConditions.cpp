#include "EntryConditions.h"

#include <algorithm>

std::uint32_t KvCValueSets::numberOf(const KvCAllowedValues& allowed) {
    Values values;
    for (std::size_t index = 0; index < allowed.size(); ++index) {
        if (const std::optional<KvTComparedValue> value = allowed.at(index)) {
            values.push_back(*value);
        }
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    const auto [found, isNew] = numbers_.try_emplace(std::move(values), static_cast<std::uint32_t>(sets_.size()));
    if (isNew) {
        sets_.push_back(&found->first);
    }
    return found->second;
}

bool KvCValueSets::isWithin(std::uint32_t part, std::uint32_t whole) const {
    if (part == whole || isEmpty(part)) {
        return true;
    }
    const Values& inner = *sets_[part];
    const Values& outer = *sets_[whole];
    // The least and the greatest value mostly decide already.
    return !outer.empty() && inner.front() >= outer.front() && inner.back() <= outer.back() &&
           std::includes(outer.begin(), outer.end(), inner.begin(), inner.end());
}

KvTConditions KvCEntryConditions::of(const KvTEntrySelection& selection) {
    KvTConditions conditions{};
    for (std::size_t index = 0; index < conditions.size(); ++index) {
        const KvCAllowedValues& allowed = selection.*comparedProperties[index].allowed;
        if (!allowed.isShared()) {
            conditions[index] = sets_.numberOf(allowed);
            continue;
        }
        if (!shared_[index]) {
            shared_[index] = sets_.numberOf(allowed);
        }
        conditions[index] = *shared_[index];
    }
    return conditions;
}
