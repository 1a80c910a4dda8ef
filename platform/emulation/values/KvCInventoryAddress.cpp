#include "KvCInventoryAddress.h"

#include "InventoryNames.h"

#include <string>
#include <string_view>
#include <utility>

KvCString KvCInventoryAddress::toString() const {
    std::string text;
    for (const Component& component : components_) {
        if (!text.empty()) {
            text += '/';
        }
        const std::string_view name = InventoryNames::nameOf(component.identifier);
        if (name.empty()) {
            text += std::to_string(component.identifier);
        } else {
            text += name;
        }
        text += '[';
        text += std::to_string(component.instance);
        text += ']';
    }
    return KvCString(std::move(text));
}
