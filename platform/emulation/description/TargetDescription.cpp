#include "TargetDescription.h"

#include "DescriptionReaders.h"
#include "InventoryNames.h"
#include "IpV4Text.h"
#include "JsonDocument.h"
#include "KvNInventoryIDs.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace {

bool readIpAddress(const JsonPlace& place, std::vector<std::uint32_t>& addresses) {
    std::string text;
    if (!JsonValues::readText(place, text)) {
        return false;
    }
    const auto address = parseIpV4(text);
    if (!address) {
        return place.refuse(JsonValues::quoted(text) +
                            " is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are expected");
    }
    addresses.push_back(*address);
    return true;
}

bool readIpAddresses(const JsonPlace& place, TargetDescription& target) {
    return readItems(place, [&target](const JsonPlace& item) { return readIpAddress(item, target.addresses); });
}

bool readServiceStatus(const JsonPlace& place, TargetDescription& target) {
    std::int64_t status = 0;
    if (!JsonValues::readInteger(place, std::numeric_limits<std::int32_t>::min(),
                                 std::numeric_limits<std::int32_t>::max(), status)) {
        return false;
    }
    target.serviceStatus = static_cast<std::int32_t>(status);
    return true;
}

bool readRebootLookups(const JsonPlace& place, TargetDescription& target) {
    return JsonValues::readUnsigned32(place, target.rebootLookups);
}

bool readInventory(const JsonPlace& place, TargetDescription& target) {
    target.inventory = readRootItem(place);
    return target.inventory != nullptr;
}

bool readFaultList(const JsonPlace& place, TargetDescription& target) {
    return readFaults(place, target.faults);
}

constexpr std::array<JsonMemberRule<TargetDescription>, 5> targetRules{{
    {"addresses", readIpAddresses},
    {"serviceStatus", readServiceStatus},
    {"rebootLookups", readRebootLookups},
    {"inventory", readInventory},
    {"faults", readFaultList},
}};

/// Bytes of a text where it is shown, at most: JSON and markup write some characters with six.
std::size_t shownSize(std::string_view text) {
    constexpr std::size_t escapeSize = 6;
    const auto isEscaped = [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == '"' || character == '\\' ||
               character == '<' || character == '>' || character == '&' || character == '\x7F';
    };
    const auto escaped = std::count_if(text.begin(), text.end(), isEscaped);
    return text.size() + static_cast<std::size_t>(escaped) * (escapeSize - 1);
}

/// The elements of an inventory, and the text of the one that has the most: its own, that of all items above it, and
/// its address.
struct ShownText {
    std::size_t elements = 0;
    std::size_t most = 0;
};

// As deep as the document.
void addShownText(const ItemDescription& item, std::size_t above, ShownText& shown) {
    constexpr std::size_t longestInstance = 13; // "[4294967295]/"
    std::size_t size = above + InventoryNames::nameOf(item.id().getCategory()).size() + longestInstance;
    for (const KvCInventoryParameter& parameter : item.parameters()) {
        size += parameter.text() != nullptr ? shownSize(*parameter.text()) : 0;
    }
    if (item.isElement()) {
        ++shown.elements;
        shown.most = std::max(shown.most, size);
    }
    for (const auto& below : item.items()) {
        addShownText(*below, size, shown);
    }
}

/// False with `reason` when a description of `size` bytes makes clients show too much.
bool isShowable(const ItemDescription& inventory, std::size_t size, std::string& reason) {
    ShownText shown;
    addShownText(inventory, 0, shown);
    const std::size_t allowed = std::max(shownTextAlwaysAllowed, size * mostShownTextPerByte);
    if (shown.elements == 0 || shown.most <= allowed / shown.elements) {
        return true;
    }
    reason = "$.inventory: " + std::to_string(shown.elements) + " elements with texts of up to " +
             std::to_string(shown.most) + " bytes, those of the items above them included, are too much to be shown; " +
             std::to_string(allowed) + " bytes in all are allowed";
    return false;
}

} // namespace

std::unique_ptr<TargetDescription> readTargetDescription(std::string text, std::string& reason) {
    const std::size_t size = text.size();
    auto target = std::make_unique<TargetDescription>();
    if (!readDocument(std::move(text), targetRules, *target, reason)) {
        return nullptr;
    }
    if (target->inventory == nullptr) {
        target->inventory = std::make_unique<ItemDescription>(nullptr, KvNInventoryIDs::ROOT.getCategory(), 1);
    }
    if (!isShowable(*target->inventory, size, reason)) {
        return nullptr;
    }
    return target;
}
