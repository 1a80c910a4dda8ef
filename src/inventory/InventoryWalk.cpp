#include "InventoryWalk.h"

#include "ElementNames.h"
#include "InventoryRules.h"
#include "KvCConsoleWriter.h"
#include "KvNInventoryIDs.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <unordered_map>

namespace {

using namespace KvNInventoryIDs;

/// The walk descends into items of these categories; all others are leaves.
bool isContainer(const KvCInventoryItem& item) {
    // Not at namespace scope, where not every compiler initialises it after the identifiers.
    static const std::array categories = {ROOT.getCategory(),       HCN.getCategory(),
                                          CN.getCategory(),         NETC.getCategory(),
                                          BACKPLANE.getCategory(),  NETWORK.getCategory(),
                                          IOROUTER.getCategory(),   ION.getCategory(),
                                          IOMODULE.getCategory(),   PIGGYBACK_MODULE.getCategory(),
                                          SUB_BOARDS.getCategory(), FBMODULE.getCategory(),
                                          UPDATE_INFO.getCategory()};
    return std::find(categories.begin(), categories.end(), item.getID().getCategory()) != categories.end();
}

/// Paths of the parameters below the PRODUCT group.
struct ProductPaths {
    KvCInventoryAddress boardType = PRODUCT / BOARD_TYPE;
    KvCInventoryAddress variant = PRODUCT / VARIANT;
    KvCInventoryAddress id = PRODUCT / ID;
    KvCInventoryAddress hwType = PRODUCT / HW_TYPE;
    KvCInventoryAddress serialNumber = PRODUCT / SERIAL_NUMBER;
    KvCInventoryAddress slotCount = PRODUCT / SLOT_COUNT;
    KvCInventoryAddress name = PRODUCT / NAME;
    KvCInventoryAddress unitName = PRODUCT / UNITNAME;
    KvCInventoryAddress packageName = PRODUCT / PACKAGE_NAME;
};

constexpr const char* unnamedElement = "Update Element";

bool hasCategory(const KvCInventoryItem& item, const KvCInventoryAddress& category) {
    return item.getID().getCategory() == category.getCategory();
}

const KvCInventoryItem* firstSubItemOf(const KvCInventoryItem& item, const KvCInventoryAddress& category) {
    const KvCInventoryItem* sub = item.getFirstSubItem();
    while (sub != nullptr && !hasCategory(*sub, category)) {
        sub = sub->getNext();
    }
    return sub;
}

bool has(const KvCInventoryItem& item, const KvCInventoryAddress& path) {
    return item.getParameter(path) != nullptr;
}

/// Reads the value of a parameter that may be missing; false if it is.
template <typename Value>
bool readParameterIfPresent(KvCErrorListPool& errors, const KvCInventoryItem& item, const KvCInventoryAddress& path,
                            Value& value) {
    const bool present = has(item, path);
    if (present) {
        item.getValue(errors, path, value);
    }
    return present;
}

class InventoryWalk {
public:
    InventoryWalk(KvCErrorListPool& errors, const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                  std::list<KvTUpdateElement>& elements, KvTNodeAddresses& nodes)
        : errors_(errors), writer_(writer), options_(options), elements_(elements), nodes_(nodes) {}

    void walk(const KvCInventoryItem& item, const KvCInventoryItem* inheritedUnit) {
        if (rememberNode(item, HCN, nodes_.hcn)) {
            hcn_ = &item;
            if (options_.verbose) {
                writer_.print(L"HCN found: %hs\n", nodes_.hcn->toString().c_str());
            }
        }
        if (rememberNode(item, CN, nodes_.cn)) {
            cn_ = &item;
            if (options_.verbose) {
                writer_.print(L"CN found: %hs\n", nodes_.cn->toString().c_str());
            }
        }
        const KvCInventoryItem* unit = unitOf(item, inheritedUnit);
        visitElement(item, unit);
        descend(item, unit);
    }

    /// Takes down the serial numbers of the nodes that were found. An element of a node's board states its number;
    /// what else is asked of the target leaves no error in the session.
    void takeNodeSerialNumbers() {
        for (const KvCInventoryItem* node : {hcn_, cn_}) {
            if (node != nullptr && has(*node, product_.serialNumber)) {
                nodes_.serialNumbers.push_back(serialNumberOf(*node));
            }
        }
    }

private:
    [[nodiscard]] std::uint32_t serialNumberOf(const KvCInventoryItem& node) const {
        const auto element = std::find_if(elements_.begin(), elements_.end(), [&node](const KvTUpdateElement& one) {
            return one.boardAddress == node.getAddress();
        });
        if (element != elements_.end()) {
            return element->serialNumber;
        }
        const KvCOwnedErrorList errors = KvCOwnedErrorList::create();
        std::uint32_t serialNumber = 0;
        node.getValue(*errors, product_.serialNumber, serialNumber);
        return serialNumber;
    }

    /// The first node of its kind in walk order wins; true when the item is it.
    [[nodiscard]] static bool rememberNode(const KvCInventoryItem& item, const KvCInventoryAddress& id,
                                           std::optional<KvCInventoryAddress>& node) {
        if (node || item.getID()[1] != id) {
            return false;
        }
        node = item.getAddress();
        return true;
    }

    /// The item itself when it names a unit; for a processor or I/O router node its backplane when that names one;
    /// else the unit of the item above.
    [[nodiscard]] const KvCInventoryItem* unitOf(const KvCInventoryItem& item,
                                                 const KvCInventoryItem* inherited) const {
        if (has(item, product_.unitName) || has(item, product_.packageName)) {
            return &item;
        }
        if (!hasCategory(item, IOROUTER) && !hasCategory(item, HCN)) {
            return inherited;
        }
        const KvCInventoryItem* candidate = &item;
        if (hasCategory(item, HCN)) {
            const KvCInventoryItem* cn = firstSubItemOf(item, CN);
            candidate = cn != nullptr ? cn : candidate;
        }
        const KvCInventoryItem* backplane = firstSubItemOf(*candidate, BACKPLANE);
        return backplane != nullptr && has(*backplane, product_.unitName) ? backplane : inherited;
    }

    void visitElement(const KvCInventoryItem& item, const KvCInventoryItem* unit) {
        const KvCInventoryAddress id = item.getID()[1];
        if (id != UPDATE_ELEMENT && id != FILESYSTEM_ELEMENT) {
            return;
        }
        const KvCInventoryItem* board = boardOf(item);
        bool configured = true;
        if (board == nullptr || !readConfiguration(item, configured) || configured != options_.configurationElements ||
            !passesFilters(item, *board)) {
            return;
        }
        KvTUpdateElement& element = insert(unit);
        fillBoard(element, *board);
        if (unit != nullptr) {
            fillUnit(element, *unit);
        }
        fillElement(element, item);
        element.configured = configured;
        makeElementNames(element.boardName, element.boardType, element.serialNumber, element.name, element.typeName,
                         element.displayName);
        element.disabled = isLeftOutAsCustom(element, options_);
        element.createErrorLists();
    }

    /// The board that carries the element; null after a warning when the element has no place.
    [[nodiscard]] const KvCInventoryItem* boardOf(const KvCInventoryItem& item) const {
        const KvCInventoryItem* updateInfo = item.getParent();
        if (updateInfo == nullptr || updateInfo->getID() != UPDATE_INFO) {
            writer_.print(L"WARNING: %hs has no UPDATE_INFO parent item!\n", item.getAddress().toString().c_str());
            return nullptr;
        }
        const KvCInventoryItem* board = updateInfo->getParent();
        if (board == nullptr) {
            writer_.print(L"WARNING: %hs has no parent item!\n", updateInfo->getAddress().toString().c_str());
        }
        return board;
    }

    /// False after a warning when the element lacks the parameter. A value that cannot be read counts as 0.
    [[nodiscard]] bool readConfiguration(const KvCInventoryItem& item, bool& configured) {
        if (!has(item, CONFIGURATION)) {
            writer_.print(L"WARNING: %hs has no CONFIGURATION parameter!\n", item.getAddress().toString().c_str());
            return false;
        }
        std::uint32_t configuration = 0;
        read(item, CONFIGURATION, configuration);
        configured = configuration != 0;
        return true;
    }

    [[nodiscard]] bool passesFilters(const KvCInventoryItem& item, const KvCInventoryItem& board) {
        if (!options_.elementNameFilter.empty()) {
            KvCString name;
            read(item, NAME, name);
            if (!matchesFilterList(options_.elementNameFilter, name.view())) {
                return false;
            }
        }
        if (!options_.boardTypeFilter.empty()) {
            KvCString boardType; // a board without a type passes, but not without an error
            read(board, product_.boardType, boardType);
            if (!matchesFilterList(options_.boardTypeFilter, boardType.view())) {
                return false;
            }
        }
        if (!options_.serialNumberFilter.empty()) {
            std::uint32_t serialNumber = 0;
            read(board, product_.serialNumber, serialNumber);
            return matchesFilterList(options_.serialNumberFilter, KvCString(serialNumber).view());
        }
        return true;
    }

    /// Inserts a new record behind the last one of its unit, or at the end. Indices are numbered after the walk.
    KvTUpdateElement& insert(const KvCInventoryItem* unit) {
        const auto [last, isNewUnit] = lastOfUnit_.try_emplace(unit, elements_.end());
        const auto position = isNewUnit ? elements_.end() : std::next(last->second);
        last->second = elements_.emplace(position);
        last->second->unitItem = unit;
        return *last->second;
    }

    void fillBoard(KvTUpdateElement& element, const KvCInventoryItem& board) {
        element.boardAddress = board.getAddress();
        readIfPresent(board, product_.boardType, element.boardType);
        readIfPresent(board, product_.variant, element.boardVariant);
        fillBoardId(element, board);
        read(board, product_.serialNumber, element.serialNumber);
        read(board, product_.slotCount, element.slotCount);
        if (element.slotCount != 0) {
            readIfPresent(board, SLOT, element.slot);
        }
        if (!readIfPresent(board, product_.name, element.boardName)) {
            element.boardName = element.boardType;
        }
        if (!element.boardVariant.isEmpty()) {
            element.boardName += " (";
            element.boardName += element.boardVariant;
            element.boardName += ")";
        }
    }

    void fillBoardId(KvTUpdateElement& element, const KvCInventoryItem& board) {
        if (has(board, product_.id)) {
            read(board, product_.id, element.boardId);
            return;
        }
        if (!has(board, product_.hwType)) {
            return;
        }
        std::uint32_t hwType = 0;
        read(board, product_.hwType, hwType);
        if (!boardIdOfHardwareType(element.boardType, hwType, element.boardId)) {
            return;
        }
        if (options_.verbose) {
            writer_.print(L"%hs: BoardId (%u) determined by HwType (%u)\n", element.boardType.c_str(), element.boardId,
                          hwType);
        }
    }

    void fillUnit(KvTUpdateElement& element, const KvCInventoryItem& unit) {
        if (!readIfPresent(unit, product_.unitName, element.unitName)) {
            readIfPresent(unit, product_.packageName, element.unitName);
        }
        const KvCInventoryItem& namingItem = namingItemOf(unit);
        readIfPresent(namingItem, UNITNAME, element.unitInstanceName);
        readIfPresent(namingItem, RACKNAME, element.rackName);
    }

    /// The item that knows the unit's instance and rack names: of an I/O router without a name of its own, the I/O
    /// node that has its serial number.
    [[nodiscard]] const KvCInventoryItem& namingItemOf(const KvCInventoryItem& unit) {
        if (has(unit, UNITNAME) || unit.getID()[1] != IOROUTER) {
            return unit;
        }
        std::uint32_t serialNumber = 0;
        read(unit, product_.serialNumber, serialNumber);
        const KvCInventoryItem* ioNode = unit.getItem(NETWORK / ION[withoutSubNumber(serialNumber)]);
        return ioNode != nullptr ? *ioNode : unit;
    }

    void fillElement(KvTUpdateElement& element, const KvCInventoryItem& item) {
        element.isFileSystemElement = item.getID()[1] == FILESYSTEM_ELEMENT;
        element.elementAddress = item.getAddress();
        readIfPresent(item, ID, element.elementId);
        readIfPresent(item, LOCATION, element.location);
        readIfPresent(item, HW_COMPATIBILITY_ID, element.hwCompatibilityId);
        readIfPresent(item, SW_COMPATIBILITY_ID, element.swCompatibilityId);
        readIfPresent(item, TYPE_ID, element.typeId);
        std::uint8_t custom = 0;
        readIfPresent(item, CUSTOM, custom);
        element.custom = custom;
        readInstalled(errors_, item, element);
        read(item, NAME, element.name);
        if (element.name.isEmpty()) {
            element.name = unnamedElement;
        }
        read(item, VERSION_HISTORY, element.versionHistory);
    }

    void descend(const KvCInventoryItem& item, const KvCInventoryItem* unit) {
        if (!isContainer(item)) {
            return;
        }
        const KvCInventoryItem* updateInfo = item.getItem(UPDATE_INFO);
        if (updateInfo != nullptr) {
            walk(*updateInfo, unit);
        }
        for (const KvCInventoryItem* sub = item.getFirstSubItem(); sub != nullptr; sub = sub->getNext()) {
            if (sub != updateInfo) {
                walk(*sub, unit);
            }
        }
    }

    /// Reads a value; when it cannot be read `value` stays as it is, and the service has reported the error.
    template <typename Value>
    void read(const KvCInventoryItem& item, const KvCInventoryAddress& path, Value& value) {
        item.getValue(errors_, path, value);
    }

    template <typename Value>
    bool readIfPresent(const KvCInventoryItem& item, const KvCInventoryAddress& path, Value& value) {
        return readParameterIfPresent(errors_, item, path, value);
    }

    KvCErrorListPool& errors_;
    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    std::list<KvTUpdateElement>& elements_;
    KvTNodeAddresses& nodes_;
    const ProductPaths product_;
    const KvCInventoryItem* hcn_ = nullptr;
    const KvCInventoryItem* cn_ = nullptr;
    /// The last record of each unit met so far.
    std::unordered_map<const KvCInventoryItem*, std::list<KvTUpdateElement>::iterator> lastOfUnit_;
};

} // namespace

void readInstalled(KvCErrorListPool& errors, const KvCInventoryItem& item, KvTUpdateElement& element) {
    std::uint8_t valid = 0;
    element.hasValid = readParameterIfPresent(errors, item, VALID, valid);
    element.valid = valid == 1;
    std::uint8_t active = 0;
    element.hasActive = readParameterIfPresent(errors, item, ACTIVE, active);
    element.active = active == 1;
    element.hasChecksum = readParameterIfPresent(errors, item, CHECKSUM_CRC32, element.checksumCrc32);
    element.hasVersion = has(item, VERSION);
    item.getValue(errors, VERSION, element.version);
}

void walkInventory(KvCErrorListPool& errors, const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                   const KvCInventoryItem& root, std::list<KvTUpdateElement>& elements, KvTNodeAddresses& nodes) {
    elements.clear();
    nodes = {};
    InventoryWalk walk(errors, writer, options, elements, nodes);
    walk.walk(root, nullptr);
    walk.takeNodeSerialNumbers();
    std::uint32_t index = 0;
    for (KvTUpdateElement& element : elements) {
        element.index = index++;
    }
}
