#include "ItemDescription.h"

#include "KvNInventoryIDs.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

namespace {

using Component = KvCInventoryAddress::Component;

bool isBefore(const Component& first, const Component& second) noexcept {
    return std::tie(first.identifier, first.instance) < std::tie(second.identifier, second.instance);
}

KvCInventoryAddress addressBelow(const ItemDescription* parent, const KvCInventoryAddress& id) {
    if (parent == nullptr) {
        return KvNInventoryIDs::ROOT;
    }
    return parent->parent() == nullptr ? id : parent->address() / id;
}

} // namespace

std::optional<std::uint32_t> KvCInventoryParameter::keyOf(const KvCInventoryAddress& path) noexcept {
    constexpr std::size_t longestPath = 2;
    constexpr std::uint32_t highestIdentifier = 0xFFFF;
    const auto& components = path.getComponents();
    if (components.empty() || components.size() > longestPath) {
        return std::nullopt;
    }
    std::uint32_t key = 0;
    for (const Component& component : components) {
        if (component.instance != 1 || component.identifier > highestIdentifier) {
            return std::nullopt;
        }
        key = keyOf(key, component.identifier);
    }
    return key;
}

std::optional<std::uint32_t> KvCInventoryParameter::number32() const noexcept {
    const std::uint64_t* const number = std::get_if<std::uint64_t>(&value_);
    if (number == nullptr || *number > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(*number);
}

ItemDescription::ItemDescription(const ItemDescription* parent, std::uint32_t identifier, std::uint32_t instance)
    : parent_(parent), id_(identifier, instance), address_(addressBelow(parent, id_)) {}

bool ItemDescription::isElement() const noexcept {
    const std::uint32_t category = id_.getCategory();
    return category == KvNInventoryIDs::UPDATE_ELEMENT.getCategory() ||
           category == KvNInventoryIDs::FILESYSTEM_ELEMENT.getCategory();
}

const UpdateBehaviour& ItemDescription::update() const noexcept {
    static const UpdateBehaviour usual;
    return update_ != nullptr ? *update_ : usual;
}

std::optional<std::size_t> ItemDescription::childIndex(const Component& identity) const noexcept {
    const auto found = std::lower_bound(
        byIdentity_.begin(), byIdentity_.end(), identity,
        [this](std::uint32_t index, const Component& sought) { return isBefore(items_[index]->identity(), sought); });
    if (found == byIdentity_.end() || items_[*found]->identity() != identity) {
        return std::nullopt;
    }
    return *found;
}

const KvCInventoryParameter* ItemDescription::parameter(const KvCInventoryAddress& path) const noexcept {
    const auto key = KvCInventoryParameter::keyOf(path);
    const auto found = std::lower_bound(
        parameters_.begin(), parameters_.end(), key.value_or(0),
        [](const KvCInventoryParameter& parameter, std::uint32_t sought) { return parameter.key() < sought; });
    return key && found != parameters_.end() && found->key() == *key ? &*found : nullptr;
}

void ItemDescription::setParameters(std::vector<KvCInventoryParameter> parameters) {
    parameters_ = std::move(parameters);
    std::sort(parameters_.begin(), parameters_.end(),
              [](const KvCInventoryParameter& first, const KvCInventoryParameter& second) {
                  return first.key() < second.key();
              });
}

std::optional<std::size_t> ItemDescription::setItems(std::vector<std::unique_ptr<ItemDescription>> items) {
    items_ = std::move(items);
    byIdentity_.resize(items_.size());
    std::iota(byIdentity_.begin(), byIdentity_.end(), 0U);
    const auto identityAt = [this](std::uint32_t index) -> const Component& { return items_[index]->identity(); };
    std::stable_sort(byIdentity_.begin(), byIdentity_.end(), [&](std::uint32_t first, std::uint32_t second) {
        return isBefore(identityAt(first), identityAt(second));
    });
    const auto twin =
        std::adjacent_find(byIdentity_.begin(), byIdentity_.end(), [&](std::uint32_t first, std::uint32_t second) {
            return identityAt(first) == identityAt(second);
        });
    return twin == byIdentity_.end() ? std::nullopt : std::optional<std::size_t>(*std::next(twin));
}
