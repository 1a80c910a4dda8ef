#include "Operation.h"

#include <algorithm>
#include <array>

namespace {

constexpr OperationTraits inventory(Operation operation, std::string_view name) {
    return {operation, name, false, true, 1};
}

constexpr OperationTraits host(Operation operation, std::string_view name, std::int64_t failed = 1) {
    return {operation, name, true, true, failed};
}

constexpr OperationTraits untraced(Operation operation, std::string_view name) {
    return {operation, name, false, false, 1};
}

/// In the order of the enumeration.
constexpr std::array<OperationTraits, operationCount> operations{
    inventory(Operation::createRootHandleByIpAddressList, "createRootHandleByIpAddressList"),
    inventory(Operation::deleteRootHandle, "deleteRootHandle"),
    inventory(Operation::scan, "scan"),
    inventory(Operation::lock, "lock"),
    inventory(Operation::unlock, "unlock"),
    inventory(Operation::transferFile, "transferFile"),
    inventory(Operation::deleteRemoteFile, "deleteRemoteFile"),
    inventory(Operation::update2, "update2"),
    inventory(Operation::updateStatus2, "updateStatus2"),
    inventory(Operation::updateErrors2, "updateErrors2"),
    inventory(Operation::updateFinish, "updateFinish"),
    host(Operation::createFilter, "KvHIM_createFilter"),
    host(Operation::setFilterParameter, "KvHIM_setFilterParameter"),
    host(Operation::applyFilter, "KvHIM_applyFilter"),
    host(Operation::getDeviceList, "KvHIM_getDeviceList"),
    host(Operation::deleteFilter, "KvHIM_deleteFilter"),
    host(Operation::createDeviceHandle, "KvHIM_createDeviceHandle"),
    host(Operation::deleteDeviceHandle, "KvHIM_deleteDeviceHandle"),
    host(Operation::forceResetDevice, "KvHIM_FORCE_resetDevice"),
    host(Operation::createFTClientHandle, "KvHIM_createFTClientHandle"),
    host(Operation::deleteFTClientHandle, "KvHIM_deleteFTClientHandle"),
    host(Operation::makeDir, "KvHIM_makeDir"),
    host(Operation::putFileU, "KvHIM_putFileU", -1),
    host(Operation::renameFile, "KvHIM_renameFile", -1),
    untraced(Operation::getValue, "getValue"),
    untraced(Operation::extractInventoryTreeFromFile, "extractInventoryTreeFromFile"),
};

constexpr bool isInOrder() {
    for (std::size_t index = 0; index < operations.size(); ++index) {
        if (static_cast<std::size_t>(operations[index].operation) != index) {
            return false;
        }
    }
    return true;
}
static_assert(isInOrder());

} // namespace

const OperationTraits& traitsOf(Operation operation) noexcept {
    return operations[static_cast<std::size_t>(operation)];
}

std::optional<Operation> operationNamed(std::string_view name) noexcept {
    const auto* const found = std::find_if(operations.begin(), operations.end(),
                                           [name](const OperationTraits& traits) { return traits.name == name; });
    return found == operations.end() ? std::nullopt : std::optional(found->operation);
}
