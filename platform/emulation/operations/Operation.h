#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The imported operations at which faults can be put.
enum class Operation : std::uint8_t {
    createRootHandleByIpAddressList,
    deleteRootHandle,
    scan,
    lock,
    unlock,
    transferFile,
    deleteRemoteFile,
    update2,
    updateStatus2,
    updateErrors2,
    updateFinish,
    createFilter,
    setFilterParameter,
    applyFilter,
    getDeviceList,
    deleteFilter,
    createDeviceHandle,
    deleteDeviceHandle,
    forceResetDevice,
    createFTClientHandle,
    deleteFTClientHandle,
    makeDir,
    putFileU,
    renameFile,
    getValue,
    extractInventoryTreeFromFile,
};

/// Behind the last one.
inline constexpr std::size_t operationCount = static_cast<std::size_t>(Operation::extractInventoryTreeFromFile) + 1;

/// What is common to all calls of an operation.
struct OperationTraits {
    Operation operation;
    /// As descriptions and the trace name it.
    std::string_view name;
    /// Belongs to the host interface: the service's status comes before everything else.
    bool isHostInterface;
    bool isTraced;
    /// The result of a failed call.
    std::int64_t failed;
};

[[nodiscard]] const OperationTraits& traitsOf(Operation operation) noexcept;
/// Nothing for an unknown name.
[[nodiscard]] std::optional<Operation> operationNamed(std::string_view name) noexcept;
