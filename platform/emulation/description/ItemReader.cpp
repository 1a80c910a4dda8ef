#include "DescriptionReaders.h"
#include "InventoryNames.h"

#include <limits>
#include <map>
#include <string>
#include <utility>

namespace {

using Items = std::vector<std::unique_ptr<ItemDescription>>;

/// How many siblings of each identifier have been read.
using SiblingCounts = std::map<std::uint32_t, std::uint32_t>;

constexpr std::uint64_t highest32 = std::numeric_limits<std::uint32_t>::max();

// The behaviour of an update.

bool readPolls(const JsonPlace& place, UpdateBehaviour& update) {
    return JsonValues::readUnsigned32(place, update.polls);
}

bool readProgressPair(const JsonPlace& place, std::vector<UpdateBehaviour::Progress>& list) {
    if (!place.value().is_array() || place.value().size() != 2) {
        return place.refuse("a pair [done, total] is expected");
    }
    UpdateBehaviour::Progress progress;
    if (!JsonValues::readUnsigned32(place.item(0), progress.done) ||
        !JsonValues::readUnsigned32(place.item(1), progress.total)) {
        return false;
    }
    list.push_back(progress);
    return true;
}

bool readProgress(const JsonPlace& place, UpdateBehaviour& update) {
    auto& list = update.progress.emplace();
    return readItems(place, [&list](const JsonPlace& item) { return readProgressPair(item, list); });
}

bool readState(const JsonPlace& place, UpdateBehaviour& update) {
    return JsonValues::readUnsigned32(place, update.state);
}

bool readErrors(const JsonPlace& place, UpdateBehaviour& update) {
    return readErrorEntries(place, update.errors);
}

bool readActivation(const JsonPlace& place, UpdateBehaviour& update) {
    const bool isText = place.value().is_string();
    const std::string_view text = isText ? place.value().get_string() : std::string_view();
    if (text != "immediate" && text != "reboot") {
        return place.refuse(R"("immediate" or "reboot" is expected)");
    }
    update.activation = text == "reboot" ? UpdateBehaviour::Activation::reboot : UpdateBehaviour::Activation::immediate;
    return true;
}

constexpr std::array<JsonMemberRule<UpdateBehaviour>, 5> updateRules{{
    {"polls", readPolls},
    {"progress", readProgress},
    {"state", readState},
    {"errors", readErrors},
    {"activation", readActivation},
}};

// The parts of an item that do not depend on its place in the tree.

struct ItemParts {
    std::optional<std::uint32_t> identifier;
    std::optional<std::uint32_t> instance;
    std::vector<KvCInventoryParameter> parameters;
    std::unique_ptr<UpdateBehaviour> update;
};

bool readIdentifier(const JsonPlace& place, ItemParts& parts) {
    std::string name;
    if (!JsonValues::readText(place, name)) {
        return false;
    }
    parts.identifier = InventoryNames::itemIdentifier(name);
    return parts.identifier || place.refuse("unknown identifier " + JsonValues::quoted(name));
}

bool readInstance(const JsonPlace& place, ItemParts& parts) {
    std::uint64_t number = 0;
    if (!JsonValues::readUnsigned(place, 1, highest32, number)) {
        return false;
    }
    parts.instance = static_cast<std::uint32_t>(number);
    return true;
}

bool readParameter(const JsonPlace& place, std::string_view path, ItemParts& parts) {
    const auto identifiers = InventoryNames::parameterPath(path);
    if (!identifiers) {
        return place.refuse("unknown parameter name");
    }
    const std::uint32_t key = KvCInventoryParameter::keyOf(identifiers->group, identifiers->parameter);
    const KvNJson::jsonView value = place.value();
    if (value.is_string()) {
        std::string text;
        if (!JsonValues::readText(place, text)) {
            return false;
        }
        parts.parameters.emplace_back(key, std::move(text));
        return true;
    }
    if (value.is_number_unsigned()) {
        parts.parameters.emplace_back(key, value.get_unsigned());
        return true;
    }
    return place.refuse("a text or an unsigned number is expected");
}

bool readParameters(const JsonPlace& place, ItemParts& parts) {
    if (!JsonValues::requireObject(place)) {
        return false;
    }
    parts.parameters.reserve(place.value().size());
    for (std::size_t index = 0; index < place.value().size(); ++index) {
        const std::string_view path = place.value().key(index);
        if (path != "comment" && !readParameter(place.member(index), path, parts)) {
            return false;
        }
    }
    return true;
}

bool readUpdate(const JsonPlace& place, ItemParts& parts) {
    parts.update = std::make_unique<UpdateBehaviour>();
    return readMembers(place, updateRules, *parts.update);
}

/// The items below are read once the item itself is known.
bool leaveForLater(const JsonPlace& place, ItemParts& /*parts*/) {
    return JsonValues::requireArray(place);
}

constexpr std::array<JsonMemberRule<ItemParts>, 5> itemRules{{
    {"id", readIdentifier},
    {"instance", readInstance},
    {"parameters", readParameters},
    {"items", leaveForLater},
    {"update", readUpdate},
}};

std::unique_ptr<ItemDescription> readItem(const JsonPlace& place, const ItemDescription* parent,
                                          SiblingCounts& siblings);

bool readChildren(const JsonPlace& place, ItemDescription& item) {
    SiblingCounts counts;
    Items children;
    children.reserve(place.value().size());
    const bool isRead = readItems(place, [&](const JsonPlace& child) {
        children.push_back(readItem(child, &item, counts));
        return children.back() != nullptr;
    });
    if (!isRead) {
        return false;
    }
    if (const auto twin = item.setItems(std::move(children))) {
        const KvCInventoryAddress& id = item.items()[*twin]->id();
        return place.item(*twin).refuse("the instance " + std::to_string(id.getComponents().front().instance) + " of " +
                                        std::string(InventoryNames::nameOf(id.getCategory())) +
                                        " is given twice among siblings");
    }
    return true;
}

// The depth is limited by that of a JSON document.
std::unique_ptr<ItemDescription> readItem(const JsonPlace& place, const ItemDescription* parent,
                                          SiblingCounts& siblings) {
    ItemParts parts;
    if (!readMembers(place, itemRules, parts)) {
        return nullptr;
    }
    if (!parts.identifier) {
        static_cast<void>(place.refuse("the key id is missing"));
        return nullptr;
    }
    const std::uint32_t position = ++siblings[*parts.identifier];
    auto item = std::make_unique<ItemDescription>(parent, *parts.identifier, parts.instance.value_or(position));
    item->setParameters(std::move(parts.parameters));
    item->setUpdate(std::move(parts.update));
    const JsonPlace items = place.member("items");
    if (items.value().is_valid() && !readChildren(items, *item)) {
        return nullptr;
    }
    return item;
}

} // namespace

std::unique_ptr<ItemDescription> readRootItem(const JsonPlace& place) {
    SiblingCounts alone;
    return readItem(place, nullptr, alone);
}
