#include "InventoryListing.h"

#include "KvNInventoryIDs.h"
#include "OwnedErrorList.h"
#include "Property.h"

#include <cstdint>

namespace {

/// Reads a parameter as one type. What fails adds one error and leaves the value as it was.
template <typename Value>
bool read(const KvCInventoryItem& item, const KvCInventoryAddress& path, Value& value) {
    const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
    const Value before = value;
    item.getValue(*errors, path, value);
    const std::uint32_t count = errors->getErrorCount();
    require(count == 0 || (count == 1 && value == before), "A value that cannot be read is one error, and left alone.");
    return count == 0;
}

/// The text of a parameter; empty when the item has none.
std::string checkParameter(const KvCInventoryItem& item, const KvCInventoryAddress& path) {
    std::uint32_t number = 0x5A5A5A5A;
    std::uint8_t byte = 0x5A;
    KvCString text("marked");
    KvCVersion version(7, 7, 7, 7, 7, 7);
    const bool isNumber = read(item, path, number);
    const bool isByte = read(item, path, byte);
    const bool isText = read(item, path, text);
    const bool isVersion = read(item, path, version);
    require(item.getParameter(path) != nullptr || (!isNumber && !isText), "What is not there has no value.");
    require(!isNumber || !isText, "A value is a number or a text.");
    require(isByte == (isNumber && number <= 0xFF) && (!isByte || byte == number), "A byte is a number that fits.");
    require(isVersion == isText && (!isVersion || version == KvCVersion(text.c_str())), "A version is a text.");
    if (isNumber) {
        return " " + std::to_string(number);
    }
    return isText ? " \"" + std::string(text.view()) + "\"" : item.getParameter(path) != nullptr ? " ?" : "";
}

void checkPlace(const KvCInventoryItem& root, const KvCInventoryItem& item) {
    const KvCInventoryItem* const parent = item.getParent();
    if (parent == nullptr) {
        require(&item == &root && item.getAddress() == KvNInventoryIDs::ROOT, "Only the root has no parent.");
        return;
    }
    const KvCInventoryAddress expected =
        parent == &root ? item.getID() : KvCInventoryAddress(parent->getAddress()) / item.getID();
    require(item.getAddress() == expected, "An address is the way to the item.");
    require(root.getItem(item.getAddress()) == &item, "An item is found at its address.");
    require(parent->getItem(item.getID()) == &item, "An item is found below its parent.");
}

/// The item after `item` in preorder; null at the end.
const KvCInventoryItem* following(const KvCInventoryItem* item) {
    if (const KvCInventoryItem* sub = item->getFirstSubItem(); sub != nullptr) {
        require(sub->getParent() == item, "The first item below another one knows it.");
        return sub;
    }
    while (item != nullptr && item->getNext() == nullptr) {
        item = item->getParent();
    }
    if (item == nullptr) {
        return nullptr;
    }
    require(item->getNext()->getParent() == item->getParent(), "Neighbours have one parent.");
    return item->getNext();
}

} // namespace

std::string listInventory(const KvCInventoryItem& root) {
    using namespace KvNInventoryIDs;
    std::string listing;
    for (const KvCInventoryItem* item = &root; item != nullptr; item = following(item)) {
        checkPlace(root, *item);
        listing += item->getID().toString().view();
        for (const KvCInventoryAddress& path : {VERSION, CHECKSUM_CRC32, TYPE_ID, PRODUCT / SERIAL_NUMBER}) {
            listing += checkParameter(*item, path);
        }
        listing += '\n';
    }
    return listing;
}
