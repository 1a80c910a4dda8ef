#include "KvCTargetInventory.h"

#include "ElementNames.h"
#include "ExhaustedMemory.h"
#include "KvCConsoleWriter.h"
#include "KvNInventoryIDs.h"
#include "ScannedTree.h"

#include <utility>

KvCTargetInventory::~KvCTargetInventory() {
    fileSystemTemplate_.reset();
    attempt([this] { release(); });
}

void KvCTargetInventory::clear() {
    elements_.clear();
    byIndex_.clear();
    fileSystemTemplate_.reset();
    nodes_ = {};
    hiddenElements_.clear();
}

void KvCTargetInventory::release() {
    if (rootHandle_ != nullptr) {
        KvCInventoryManager::getInstance()->deleteRootHandle(errors_, std::exchange(rootHandle_, nullptr));
    }
}

bool KvCTargetInventory::scanInventory(const KvCString& address) {
    KvCInventoryManager& manager = *KvCInventoryManager::getInstance();
    if (manager.createRootHandleByIpAddressList(errors_, address.c_str(), rootHandle_) != 0) {
        return false;
    }
    KvCScannedTree tree;
    if (manager.scan(errors_, rootHandle_, tree.out()) != 0 || tree.root() == nullptr) {
        return false;
    }
    walkInventory(errors_, writer_, options_, *tree.root(), elements_, nodes_);
    listByIndex();
    buildFileSystemTemplate();
    determineRebootSupport(errors_, *tree.root(), rebootSupportStatus_);
    if (options_.verbose) {
        writer_.print(L"Reboot support status: %u\n", rebootSupportStatus_);
    }
    showTree(*tree.root());
    return true;
}

void KvCTargetInventory::listByIndex() {
    byIndex_.clear();
    byIndex_.reserve(elements_.size());
    for (KvTUpdateElement& element : elements_) {
        byIndex_.push_back(&element);
    }
}

KvTUpdateElement& KvCTargetInventory::append(KvTUpdateElement element) {
    element.index = static_cast<std::uint32_t>(elements_.size());
    byIndex_.push_back(&elements_.emplace_back(std::move(element)));
    return elements_.back();
}

const KvTUpdateElement& KvCTargetInventory::addFileElement(std::string_view targetPath) {
    KvTUpdateElement& element = append(*fileSystemTemplate_);
    element.location = KvCString(targetPath);
    if (const std::size_t separator = targetPath.find_last_of("/\\"); separator != std::string_view::npos) {
        element.name += " (";
        element.name += targetPath.substr(separator + 1);
        element.name += ")";
    }
    makeElementNames(element.boardName, element.boardType, element.serialNumber, element.name, element.typeName,
                     element.displayName);
    element.createErrorLists();
    return element;
}

/// To whoever has asked for it; the session itself needs the tree no more.
void KvCTargetInventory::showTree(const KvCInventoryItem& root) {
    // If nothing is left, it is asked what was hidden.
    if (findsHiddenElements_ || elements_.empty()) {
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
