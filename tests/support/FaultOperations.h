#pragma once

#include <array>

/// The imported operations at which faults can be put.
inline constexpr std::array faultOperations = {
    "createRootHandleByIpAddressList",
    "deleteRootHandle",
    "scan",
    "lock",
    "unlock",
    "transferFile",
    "deleteRemoteFile",
    "update2",
    "updateStatus2",
    "updateErrors2",
    "updateFinish",
    "KvHIM_createFilter",
    "KvHIM_setFilterParameter",
    "KvHIM_applyFilter",
    "KvHIM_getDeviceList",
    "KvHIM_deleteFilter",
    "KvHIM_createDeviceHandle",
    "KvHIM_deleteDeviceHandle",
    "KvHIM_FORCE_resetDevice",
    "KvHIM_createFTClientHandle",
    "KvHIM_deleteFTClientHandle",
    "KvHIM_makeDir",
    "KvHIM_putFileU",
    "KvHIM_renameFile",
    "getValue",
    "extractInventoryTreeFromFile",
};
