#pragma once

#include "HiddenElements.h"
#include "InventoryWalk.h"
#include "KvCErrorManager.h"
#include "KvCInventoryAddress.h"
#include "KvCInventoryManager.h"
#include "KvCString.h"
#include "KvISession.h"
#include "KvTOptions.h"
#include "KvTUpdateElement.h"
#include "RebootSupport.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

class KvCConsoleWriter;

/// What the target holds: its update elements, the addresses of its nodes, and whether it can be rebooted.
class KvCTargetInventory {
public:
    /// All must outlive the object; `errors` receives the errors of the session.
    KvCTargetInventory(const KvCConsoleWriter& writer, const KvNReflasher::KvTOptions& options,
                       KvCErrorListPool& errors)
        : writer_(writer), options_(options), errors_(errors) {}
    KvCTargetInventory(const KvCTargetInventory&) = delete;
    KvCTargetInventory& operator=(const KvCTargetInventory&) = delete;
    /// Gives the root handle back.
    ~KvCTargetInventory();

    /// Shows the scanned tree to `visitor` before it is released.
    void setTreeVisitor(KvNReflasher::KvTTreeVisitor visitor, void* context) {
        treeVisitor_ = visitor;
        treeContext_ = context;
    }
    /// Lets a scan find out which elements the options hide.
    void findHiddenElements() { findsHiddenElements_ = true; }
    [[nodiscard]] const std::vector<KvNReflasher::KvTHiddenElement>& hiddenElements() const { return hiddenElements_; }

    /// Forgets the elements of an earlier scan.
    void clear();
    /// Gives the root handle back.
    void release();

    /// Opens the target at `address` and reads its inventory. False when it cannot be opened or scanned; faults inside
    /// the inventory print warnings and leave the item out.
    [[nodiscard]] bool scanInventory(const KvCString& address);

    /// In the order of the walk, grouped by unit; each record's index is its position.
    [[nodiscard]] const std::list<KvTUpdateElement>& elements() const { return elements_; }
    /// Element number `index` of elements(), which must exist: what was found, the plan, the run.
    /// @{
    [[nodiscard]] const KvTUpdateElement& element(std::uint32_t index) const { return *byIndex_[index]; }
    [[nodiscard]] KvTElementPlan& planOf(std::uint32_t index) { return *byIndex_[index]; }
    [[nodiscard]] KvTElementRun& runOf(std::uint32_t index) { return *byIndex_[index]; }
    /// @}
    /// Adds an element to the end of the list; its index becomes its position.
    void addElement(KvTUpdateElement element) { append(std::move(element)); }
    /// Adds an element that stands for the file at `targetPath`: a copy of the template, which must exist.
    const KvTUpdateElement& addFileElement(std::string_view targetPath);
    /// Stands for files that no element of the target claims; null when the target takes none.
    [[nodiscard]] const KvTUpdateElement* fileSystemTemplate() const { return fileSystemTemplate_.get(); }
    /// Replaces the template that a scan has built; null: the target takes no such files.
    void setFileSystemTemplate(std::unique_ptr<KvTUpdateElement> element) { fileSystemTemplate_ = std::move(element); }
    /// Null until a scan has opened the target.
    [[nodiscard]] KvCInventoryRootHandle* rootHandle() const { return rootHandle_; }
    /// Null when the target has no such node.
    [[nodiscard]] const KvCInventoryAddress* hcnAddress() const { return nodes_.hcn ? &*nodes_.hcn : nullptr; }
    [[nodiscard]] const KvCInventoryAddress* cnAddress() const { return nodes_.cn ? &*nodes_.cn : nullptr; }
    /// Serial numbers of these nodes, as far as they state them.
    [[nodiscard]] const std::vector<std::uint32_t>& nodeSerialNumbers() const { return nodes_.serialNumbers; }
    /// The address that stands for the whole system: the HCN's, else the CN's, else null.
    [[nodiscard]] const KvCInventoryAddress* systemAddress() const { return nodes_.hcn ? hcnAddress() : cnAddress(); }
    /// One of KvERebootSupport.
    [[nodiscard]] std::uint32_t rebootSupportStatus() const { return rebootSupportStatus_; }

private:
    KvTUpdateElement& append(KvTUpdateElement element);
    void listByIndex();
    void showTree(const KvCInventoryItem& root);
    void buildFileSystemTemplate();

    const KvCConsoleWriter& writer_;
    const KvNReflasher::KvTOptions& options_;
    KvCErrorListPool& errors_;
    std::list<KvTUpdateElement> elements_;
    std::vector<KvTUpdateElement*> byIndex_;
    std::unique_ptr<KvTUpdateElement> fileSystemTemplate_;
    KvCInventoryRootHandle* rootHandle_ = nullptr;
    KvTNodeAddresses nodes_;
    std::uint32_t rebootSupportStatus_ = rebootNotDetermined;
    KvNReflasher::KvTTreeVisitor treeVisitor_ = nullptr;
    void* treeContext_ = nullptr;
    bool findsHiddenElements_ = false;
    std::vector<KvNReflasher::KvTHiddenElement> hiddenElements_;
};
