#include "KvCTargetInventory.h"

#include "ElementNames.h"
#include "ElementTables.h"
#include "ExhaustedMemory.h"
#include "KvCConsoleWriter.h"
#include "KvNInventoryIDs.h"
#include "ScannedTree.h"
#include "TableLayout.h"

#include <utility>

namespace {

std::vector<KvCString> headingRow() {
    return {"Update element", "Version"};
}

std::vector<KvCString> elementRow(const KvTUpdateElement& element) {
    std::vector<KvCString> row = {element.displayName, versionCell(element.version)};
    addStatusMarker(row, element);
    return row;
}

void printUnitFrame(const KvCConsoleWriter& writer, const std::wstring& title) {
    const std::wstring line(title.size() + 4, L'*');
    writer.print(L"\n%s\n* %s *\n%s\n", line.c_str(), title.c_str(), line.c_str());
}

} // namespace

KvCTargetInventory::~KvCTargetInventory() {
    fileSystemTemplate_.reset();
    attempt([this] {
        if (rootHandle_ != nullptr) { // without one the list of errors need not come to be
            release(KvCErrorManager::getInstance()->getMasterErrorList());
        }
    });
}

void KvCTargetInventory::clear() {
    elements_.clear();
    fileSystemTemplate_.reset();
    nodes_ = {};
    hiddenElements_.clear();
}

void KvCTargetInventory::release(KvCErrorListPool& errors) {
    if (rootHandle_ != nullptr) {
        KvCInventoryManager::getInstance()->deleteRootHandle(errors, std::exchange(rootHandle_, nullptr));
    }
}

bool KvCTargetInventory::scanInventory(KvCErrorListPool& errors, const KvCString& address) {
    KvCInventoryManager& manager = *KvCInventoryManager::getInstance();
    if (manager.createRootHandleByIpAddressList(errors, address.c_str(), rootHandle_) != 0) {
        return false;
    }
    ScannedTree tree;
    if (manager.scan(errors, rootHandle_, tree.out()) != 0 || tree.root() == nullptr) {
        return false;
    }
    walkInventory(errors, writer_, options_, *tree.root(), elements_, nodes_);
    buildFileSystemTemplate();
    determineRebootSupport(errors, *tree.root(), rebootSupportStatus_);
    if (options_.verbose) {
        writer_.print(L"Reboot support status: %u\n", rebootSupportStatus_);
    }
    showTree(*tree.root());
    return true;
}

/// To whoever has asked for it; the session itself needs the tree no more.
void KvCTargetInventory::showTree(const KvCInventoryItem& root) {
    if (findsHiddenElements_) {
        hiddenElements_ = hiddenElementsOf(root, options_);
    }
    if (treeVisitor_ != nullptr) {
        treeVisitor_(root, treeContext_);
    }
}

/// The template stands for the processor board, which carries the first element of the list.
void KvCTargetInventory::buildFileSystemTemplate() {
    if (options_.configurationElements || systemAddress() == nullptr || elements_.empty()) {
        return;
    }
    const KvTUpdateElement& first = elements_.front();
    const KvCInventoryAddress node = first.boardAddress.getLastElement()[1];
    if (node != KvNInventoryIDs::HCN && node != KvNInventoryIDs::CN) {
        if (options_.verbose) {
            writer_.print(L"WARNING: Cannot initialize file system element template. Unexpected HCN address (%hs).\n",
                          first.boardAddress.toString().c_str());
        }
        return;
    }
    auto element = std::make_unique<KvTUpdateElement>();
    element->boardAddress = first.boardAddress;
    element->boardType = first.boardType;
    element->boardVariant = first.boardVariant;
    element->boardId = first.boardId;
    element->serialNumber = first.serialNumber;
    element->slot = first.slot;
    element->slotCount = first.slotCount;
    element->boardName = first.boardName;
    element->unitName = first.unitName;
    element->unitInstanceName = first.unitInstanceName;
    element->rackName = first.rackName;
    element->hwCompatibilityId = first.hwCompatibilityId;
    element->swCompatibilityId = first.swCompatibilityId;
    element->isFileSystemElement = true;
    element->location = anyLocation;
    element->configured = false;
    element->name = "Updatable file";
    makeElementNames(element->boardName, element->boardType, element->serialNumber, element->name, element->typeName,
                     element->displayName);
    fileSystemTemplate_ = std::move(element);
}

void KvCTargetInventory::printElementTable() const {
    if (options_.verbose) {
        printUnitTables();
        return;
    }
    KvTTable table = {headingRow()};
    for (const KvTUpdateElement& element : elements_) {
        table.push_back(elementRow(element));
    }
    printTable(writer_, table);
}

/// One table for each run of elements of a unit. Elements of no unit at the head of the list have no frame and no
/// heading.
void KvCTargetInventory::printUnitTables() const {
    KvTTable table;
    std::wstring title;
    for (const KvTUpdateElement& element : elements_) {
        const std::wstring elementTitle = unitTitle(element);
        if (elementTitle != title) {
            printTable(writer_, table);
            table = {headingRow()};
            printUnitFrame(writer_, elementTitle);
            title = elementTitle;
        }
        table.push_back(elementRow(element));
    }
    printTable(writer_, table);
}
