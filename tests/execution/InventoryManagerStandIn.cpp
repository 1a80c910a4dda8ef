#include "InventoryManagerStandIn.h"

#include "KvEmulation.h"

#include <algorithm>
#include <iterator>

namespace {

using KvNInventoryManager::KvSRemoteFileHandle;

/// The two texts of a remote file end with its number.
constexpr const char* nodePrefix = "node of file";
constexpr const char* pathPrefix = "path of file";

InventoryManagerStandIn& manager() {
    return InventoryManagerStandIn::instance();
}

std::string shown(const KvCInventoryAddress& address) {
    return address.toString().c_str();
}

std::string shown(const KvSRemoteFileHandle& file) {
    const std::string node = file.node.c_str();
    const std::string number = node.substr(std::min(node.size(), std::string(nodePrefix).size()));
    const bool isWhole = node == nodePrefix + number && file.path == (pathPrefix + number).c_str();
    return isWhole ? "file" + number : "no file";
}

template <class Function>
std::string shownFunction(Function function) {
    return function == nullptr ? "null" : "something";
}

} // namespace

InventoryManagerStandIn& InventoryManagerStandIn::instance() {
    static InventoryManagerStandIn standIn;
    return standIn;
}

std::vector<std::string> InventoryManagerStandIn::texts() const {
    std::vector<std::string> texts;
    std::transform(calls_.begin(), calls_.end(), std::back_inserter(texts), [](const Call& call) { return call.text; });
    return texts;
}

std::vector<InventoryManagerStandIn::Call> InventoryManagerStandIn::callsOf(const std::string& operation) const {
    std::vector<Call> calls;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(calls),
                 [&](const Call& call) { return call.operation == operation; });
    return calls;
}

std::vector<std::string> InventoryManagerStandIn::textsOf(const std::string& operation) const {
    std::vector<std::string> texts;
    for (const Call& call : callsOf(operation)) {
        texts.push_back(call.text);
    }
    return texts;
}

void InventoryManagerStandIn::forget() {
    calls_.clear();
    timeStamps_.clear();
    transfers_ = 0;
    root_ = nullptr;
    visitor_ = nullptr;
}

void InventoryManagerStandIn::take(const std::string& operation, const std::vector<std::string>& arguments,
                                   const KvCErrorListPool& errors) {
    std::string text = operation;
    for (const std::string& argument : arguments) {
        text += ' ' + argument;
    }
    calls_.push_back({operation, text, &errors, nullptr, KvEmulation::ledger().errorLists});
    if (visitor_) {
        visitor_(operation);
    }
}

std::string InventoryManagerStandIn::nameOf(const KvCInventoryRootHandle* root) {
    root_ = root_ != nullptr ? root_ : root;
    return root == nullptr ? "null" : root == root_ ? "root" : "another root";
}

std::string InventoryManagerStandIn::nameOf(const void* lockHandle) const {
    return lockHandle == &lock_ ? "lock" : "no lock";
}

KvSRemoteFileHandle InventoryManagerStandIn::makeFile() {
    const std::string number = std::to_string(++transfers_);
    return {KvCString(nodePrefix + number), KvCString(pathPrefix + number)};
}

std::uint32_t KvCInventoryManager::lock(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                        const KvCInventoryAddress& address, std::uint32_t flags, void*& lockHandle) {
    manager().take("lock", {manager().nameOf(root), shown(address), std::to_string(flags)}, errors);
    lockHandle = manager().makeLock();
    return 0;
}

std::uint32_t KvCInventoryManager::unlock(KvCErrorListPool& errors, void* lockHandle) {
    manager().take("unlock", {manager().nameOf(lockHandle)}, errors);
    return 0;
}

std::uint32_t KvCInventoryManager::transferFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                const KvCInventoryAddress& address, void* lockHandle,
                                                const wchar_t* path, KvNInventoryManager::KvTransferProgress progress,
                                                void* context, KvSRemoteFileHandle& file) {
    std::string name;
    for (const wchar_t sign : std::wstring(path)) {
        if (sign == L'\\' || sign == L'/') {
            name.clear();
        } else {
            name += static_cast<char>(sign);
        }
    }
    manager().take("transferFile",
                   {manager().nameOf(root), shown(address), manager().nameOf(lockHandle), name, shownFunction(progress),
                    shownFunction(context)},
                   errors);
    file = manager().makeFile();
    return 0;
}

std::uint32_t
KvCInventoryManager::deleteRemoteFile(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                      const KvCInventoryAddress& address, void* lockHandle,
                                      KvSRemoteFileHandle file) { // NOLINT(performance-unnecessary-value-param)
    manager().take("deleteRemoteFile",
                   {manager().nameOf(root), shown(address), manager().nameOf(lockHandle), shown(file)}, errors);
    return 0;
}

std::uint32_t KvCInventoryManager::update2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                           const KvCInventoryAddress& address, void* lockHandle,
                                           std::uint32_t elementId,
                                           KvSRemoteFileHandle file, // NOLINT(performance-unnecessary-value-param)
                                           std::uint64_t timeStamp) {
    manager().take(
        "update2",
        {manager().nameOf(root), shown(address), manager().nameOf(lockHandle), std::to_string(elementId), shown(file)},
        errors);
    manager().takeTimeStamp(timeStamp);
    return 0;
}

std::uint32_t KvCInventoryManager::updateStatus2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                 const KvCInventoryAddress& address, std::uint32_t& id,
                                                 std::uint32_t& state, std::uint32_t& done, std::uint32_t& total) {
    constexpr std::uint32_t succeeded = 2;
    manager().take("updateStatus2", {manager().nameOf(root), shown(address), std::to_string(id)}, errors);
    state = succeeded;
    done = 1;
    total = 1;
    return 0;
}

std::uint32_t KvCInventoryManager::updateErrors2(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                 const KvCInventoryAddress& address, void* lockHandle,
                                                 std::uint32_t elementId, KvCErrorListPool& targetErrors) {
    manager().take("updateErrors2",
                   {manager().nameOf(root), shown(address), manager().nameOf(lockHandle), std::to_string(elementId)},
                   errors);
    manager().takeTargetErrors(targetErrors);
    return 0;
}

std::uint32_t KvCInventoryManager::updateFinish(KvCErrorListPool& errors, KvCInventoryRootHandle* root,
                                                const KvCInventoryAddress& address, void* lockHandle) {
    manager().take("updateFinish", {manager().nameOf(root), shown(address), manager().nameOf(lockHandle)}, errors);
    return 0;
}
