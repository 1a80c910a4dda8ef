#include "InventoryTreeFile.h"

#include "DescriptionReaders.h"
#include "FileBytes.h"
#include "JsonDocument.h"
#include "KvNInventoryIDs.h"

#include <string_view>
#include <utility>

namespace {

bool readTree(const JsonPlace& place, InventoryTreeFile& tree) {
    tree.root = readRootItem(place);
    return tree.root != nullptr;
}

bool readChecksum(const JsonPlace& place, InventoryTreeFile& tree) {
    return JsonValues::readUnsigned32(place, tree.checksum.emplace());
}

constexpr std::array<JsonMemberRule<InventoryTreeFile>, 2> treeRules{{
    {"inventoryTree", readTree},
    {"checksumCrc32", readChecksum},
}};

const ItemDescription* findFirmware(const ItemDescription& item) {
    if (item.id().getCategory() == KvNInventoryIDs::FIRMWARE.getCategory()) {
        return &item;
    }
    for (const auto& child : item.items()) {
        if (const ItemDescription* const found = findFirmware(*child)) {
            return found;
        }
    }
    return nullptr;
}

/// The bytes of a file that may be a JSON object; nothing for any other file.
std::optional<std::string> readObjectText(std::FILE& file) {
    constexpr std::string_view blanks = "\xEF\xBB\xBF \t\r\n";
    std::string text;
    bool hasBegun = false;
    const bool isRead = forEachPiece(&file, [&](std::string_view piece) {
        const std::size_t begin = hasBegun ? 0 : piece.find_first_not_of(blanks);
        if (!hasBegun && begin != std::string_view::npos) {
            hasBegun = true;
            if (piece[begin] != '{') {
                return false;
            }
        }
        text += piece;
        return text.size() <= largestDocument;
    });
    return isRead ? std::optional(std::move(text)) : std::nullopt;
}

} // namespace

const ItemDescription* InventoryTreeFile::firmware() const {
    return root != nullptr ? findFirmware(*root) : nullptr;
}

InventoryTreeFile readInventoryTreeFile(std::FILE& file, std::string& reason) {
    if (!fitsDocument(file, reason)) {
        reason.insert(0, "it ");
        return {};
    }
    const auto text = readObjectText(file);
    if (!text) {
        reason = "it holds no JSON object";
        return {};
    }
    const KvNJson::json document = parseDocument(*text, reason);
    if (document.is_invalid()) {
        return {};
    }
    JsonRefusal refusal;
    InventoryTreeFile tree;
    const JsonPlace place(document.view(), refusal);
    if (!document.view().contains("inventoryTree")) {
        static_cast<void>(place.refuse("the key inventoryTree is missing"));
    } else if (readMembers(place, treeRules, tree)) {
        return tree;
    }
    reason = refusal.path + ": " + refusal.reason;
    return {};
}
