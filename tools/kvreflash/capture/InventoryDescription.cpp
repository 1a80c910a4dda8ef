#include "InventoryDescription.h"

#include "KvCErrorManager.h"
#include "KvCInventoryItem.h"
#include "KvNInventoryIDs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

namespace {

using KvNJson::json;
using namespace KvNInventoryIDs;

using Component = KvCInventoryAddress::Component;

/// As what a parameter is read first. A value of another type is read by one of the other ways.
enum class KvEParameterKind : std::uint8_t { text, number, version };

struct ItemName {
    KvCInventoryAddress id;
    const char* name = "";
};

struct ParameterName {
    KvCInventoryAddress id;
    const char* name = "";
    KvEParameterKind kind = KvEParameterKind::text;
};

/// A parameter that an item may have.
struct ParameterPath {
    KvCInventoryAddress path;
    std::string name;
    KvEParameterKind kind = KvEParameterKind::text;
};

// The names of identifiers in descriptions of emulated targets, which the emulation knows too: the tool may be linked
// with a platform that cannot emulate, and whose texts of addresses are its own. The tables are not at namespace scope,
// where not every compiler initialises them after the identifiers.

/// The name of an item's identifier; empty when a description has none for it.
std::string_view itemName(std::uint32_t identifier) {
    static const std::array names{ItemName{ROOT, "ROOT"},
                                  ItemName{HCN, "HCN"},
                                  ItemName{CN, "CN"},
                                  ItemName{NETC, "NETC"},
                                  ItemName{BACKPLANE, "BACKPLANE"},
                                  ItemName{NETWORK, "NETWORK"},
                                  ItemName{IOROUTER, "IOROUTER"},
                                  ItemName{ION, "ION"},
                                  ItemName{IOMODULE, "IOMODULE"},
                                  ItemName{PIGGYBACK_MODULE, "PIGGYBACK_MODULE"},
                                  ItemName{SUB_BOARDS, "SUB_BOARDS"},
                                  ItemName{FBMODULE, "FBMODULE"},
                                  ItemName{UPDATE_INFO, "UPDATE_INFO"},
                                  ItemName{UPDATE_ELEMENT, "UPDATE_ELEMENT"},
                                  ItemName{FILESYSTEM_ELEMENT, "FILESYSTEM_ELEMENT"},
                                  ItemName{FIRMWARE, "FIRMWARE"}};
    const auto* const found = std::find_if(names.begin(), names.end(),
                                           [&](const ItemName& known) { return known.id.getCategory() == identifier; });
    return found != names.end() ? found->name : std::string_view();
}

std::vector<ParameterPath> makeParameterPaths() {
    using enum KvEParameterKind;
    const std::array names{ParameterName{BOARD_TYPE, "BOARD_TYPE", text},
                           ParameterName{VARIANT, "VARIANT", text},
                           ParameterName{ID, "ID", number},
                           ParameterName{HW_TYPE, "HW_TYPE", number},
                           ParameterName{SERIAL_NUMBER, "SERIAL_NUMBER", number},
                           ParameterName{SLOT_COUNT, "SLOT_COUNT", number},
                           ParameterName{NAME, "NAME", text},
                           ParameterName{UNITNAME, "UNITNAME", text},
                           ParameterName{PACKAGE_NAME, "PACKAGE_NAME", text},
                           ParameterName{SLOT, "SLOT", number},
                           ParameterName{RACKNAME, "RACKNAME", text},
                           ParameterName{CONFIGURATION, "CONFIGURATION", number},
                           ParameterName{LOCATION, "LOCATION", text},
                           ParameterName{HW_COMPATIBILITY_ID, "HW_COMPATIBILITY_ID", number},
                           ParameterName{SW_COMPATIBILITY_ID, "SW_COMPATIBILITY_ID", number},
                           ParameterName{TYPE_ID, "TYPE_ID", number},
                           ParameterName{CUSTOM, "CUSTOM", number},
                           ParameterName{VALID, "VALID", number},
                           ParameterName{ACTIVE, "ACTIVE", number},
                           ParameterName{CHECKSUM_CRC32, "CHECKSUM_CRC32", number},
                           ParameterName{VERSION, "VERSION", version},
                           ParameterName{VERSION_HISTORY, "VERSION_HISTORY", text},
                           ParameterName{MIN_HW_COMPATIBILITY_ID, "MIN_HW_COMPATIBILITY_ID", number},
                           ParameterName{MAX_HW_COMPATIBILITY_ID, "MAX_HW_COMPATIBILITY_ID", number},
                           ParameterName{MIN_SW_COMPATIBILITY_ID, "MIN_SW_COMPATIBILITY_ID", number},
                           ParameterName{MAX_SW_COMPATIBILITY_ID, "MAX_SW_COMPATIBILITY_ID", number}};
    std::vector<ParameterPath> paths;
    for (const ParameterName& known : names) {
        paths.push_back({known.id, known.name, known.kind});
        paths.push_back({PRODUCT / known.id, std::string("PRODUCT/") + known.name, known.kind});
    }
    return paths;
}

json valueOf(const KvCString& text) {
    return {text};
}

json valueOf(const KvCVersion& version) {
    return {version.getAsString()};
}

template <typename Number>
json valueOf(Number number) {
    return {std::uint32_t(number)};
}

/// The value when it can be read as this type.
template <typename Value>
std::optional<json> readAs(KvCErrorListPool& errors, const KvCInventoryItem& item, const KvCInventoryAddress& path) {
    Value value{};
    const std::uint32_t before = errors.getErrorCount();
    item.getValue(errors, path, value);
    return errors.getErrorCount() == before ? std::optional(valueOf(value)) : std::nullopt;
}

struct ErrorListRelease {
    void operator()(KvCErrorList* list) const { KvCErrorManager::getInstance()->deleteErrorList(list); }
};

using ValueReader = std::optional<json> (*)(KvCErrorListPool&, const KvCInventoryItem&, const KvCInventoryAddress&);

/// The ways to read a parameter of a kind, the next one to be taken when one fails. What a version says as a text stays
/// as it is, while no other text is taken for a version, which most texts are not.
const std::vector<ValueReader>& readersOf(KvEParameterKind kind) {
    static const std::vector<ValueReader> ofText{readAs<KvCString>, readAs<std::uint32_t>, readAs<std::uint8_t>};
    static const std::vector<ValueReader> ofNumber{readAs<std::uint32_t>, readAs<std::uint8_t>, readAs<KvCString>};
    static const std::vector<ValueReader> ofVersion{readAs<KvCString>, readAs<KvCVersion>, readAs<std::uint32_t>};
    switch (kind) {
    case KvEParameterKind::text:
        return ofText;
    case KvEParameterKind::number:
        return ofNumber;
    case KvEParameterKind::version:
        return ofVersion;
    }
    return ofText;
}

/// The most bytes of a text that a description may hold.
constexpr std::size_t longestText = 4096;

/// The value as it is read again: what is not UTF-8 in a text is replaced.
json asWritten(const json& value) {
    return json::parse(value.dump(-1, ' ', false, KvNJson::error_handler_t::replace));
}

/// The first longestText bytes of a longer text in UTF-8, or fewer: no character is cut in two.
json shortened(std::string_view text) {
    constexpr unsigned char continuationMask = 0xC0;
    constexpr unsigned char continuation = 0x80;
    std::size_t end = longestText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & continuationMask) == continuation) {
        --end;
    }
    return {text.substr(0, end)};
}

class InventoryReader {
public:
    [[nodiscard]] DescribedInventory take() && { return std::move(result_); }

    void readRoot(const KvCInventoryItem& root) {
        const Component id = root.getID().getComponents().front();
        if (isDescribable(root, id)) {
            result_.root = describe(root, id, 1);
        }
    }

private:
    /// True when a description may hold such an item; says when not.
    [[nodiscard]] bool isDescribable(const KvCInventoryItem& item, const Component& id) {
        if (itemName(id.identifier).empty()) {
            leaveOut(item, "is of an unknown kind");
            return false;
        }
        if (id.instance == 0) {
            leaveOut(item, "has the instance number 0");
            return false;
        }
        return true;
    }

    /// `position`: the instance number that the item has when none is written.
    [[nodiscard]] json describe(const KvCInventoryItem& item, const Component& id, std::uint32_t position) {
        ++result_.itemCount;
        json description = json::makeObject();
        description.set("id", itemName(id.identifier));
        if (id.instance != position) {
            description.set("instance", id.instance);
        }
        if (json parameters = describeParameters(item); parameters.view().size() != 0) {
            description.set("parameters", std::move(parameters));
        }
        if (json items = describeItemsBelow(item); items.view().size() != 0) {
            description.set("items", std::move(items));
        }
        return description;
    }

    [[nodiscard]] json describeParameters(const KvCInventoryItem& item) {
        static const std::vector<ParameterPath> paths = makeParameterPaths();
        json parameters = json::makeObject();
        for (const ParameterPath& parameter : paths) {
            if (item.getParameter(parameter.path) == nullptr) {
                continue;
            }
            if (std::optional<json> value = read(item, parameter)) {
                parameters.set(parameter.name, std::move(*value));
                ++result_.parameterCount;
            }
        }
        return parameters;
    }

    /// Nothing, and a warning, when the value cannot be read by any way.
    [[nodiscard]] std::optional<json> read(const KvCInventoryItem& item, const ParameterPath& parameter) {
        std::optional<json> value;
        for (const ValueReader reader : readersOf(parameter.kind)) {
            value = reader(*errors_, item, parameter.path);
            if (value) {
                break;
            }
        }
        errors_->reset();
        if (!value) {
            warn(parameter.name + " of " + addressOf(item) + " cannot be read; it is left out");
            return value;
        }
        if (value->view().is_string()) {
            return describable(std::move(*value), item, parameter);
        }
        return value;
    }

    /// The text as a description may hold it; warns if that is another one.
    [[nodiscard]] json describable(json value, const KvCInventoryItem& item, const ParameterPath& parameter) {
        const json written = asWritten(value);
        const std::string_view text = written.view().get_string();
        if (text != value.view().get_string()) {
            warn(parameter.name + " of " + addressOf(item) + " is not UTF-8; what is not is written as U+FFFD");
            value = json(text);
        }
        if (text.size() > longestText) {
            warn(parameter.name + " of " + addressOf(item) + " has " + std::to_string(text.size()) +
                 " bytes; it is cut to " + std::to_string(longestText) + ", the most that a target.json may hold");
            value = shortened(text);
        }
        return value;
    }

    // The depth is that of the target's inventory.
    [[nodiscard]] json describeItemsBelow(const KvCInventoryItem& item) {
        json items = json::makeArray();
        std::map<std::uint32_t, std::uint32_t> positions;
        std::set<std::pair<std::uint32_t, std::uint32_t>> known;
        for (const KvCInventoryItem* sub = item.getFirstSubItem(); sub != nullptr; sub = sub->getNext()) {
            const Component id = sub->getID().getComponents().front();
            if (!isDescribable(*sub, id)) {
                continue;
            }
            if (!known.emplace(id.identifier, id.instance).second) {
                leaveOut(*sub, "is there twice");
                continue;
            }
            items.append(describe(*sub, id, ++positions[id.identifier]));
        }
        return items;
    }

    void leaveOut(const KvCInventoryItem& item, const char* reason) {
        warn(addressOf(item) + " " + reason + "; it is left out with everything below it");
    }

    [[nodiscard]] static std::string addressOf(const KvCInventoryItem& item) {
        return std::string(item.getAddress().toString().view());
    }

    void warn(std::string sentence) { result_.warnings.push_back(std::move(sentence)); }

    DescribedInventory result_;
    /// Of the reads.
    const std::unique_ptr<KvCErrorList, ErrorListRelease> errors_{
        KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300)};
};

} // namespace

DescribedInventory describeInventory(const KvCInventoryItem& root) {
    InventoryReader reader;
    reader.readRoot(root);
    return std::move(reader).take();
}
