#pragma once

#include "ExhaustedMemory.h"
#include "KvHostInterface.h"

#include <cstdint>
#include <utility>

/// Owns a handle of the host interface and gives it back at the end with `deleteHandle`, whose errors go to the list
/// that was given. release() gives it back earlier, where its status matters.
template <typename Handle, std::int32_t (*deleteHandle)(KvCErrorListPool&, Handle)>
class KvCHostInterfaceHandle {
public:
    explicit KvCHostInterfaceHandle(KvCErrorListPool& errors) : errors_(errors) {}
    KvCHostInterfaceHandle(const KvCHostInterfaceHandle&) = delete;
    KvCHostInterfaceHandle& operator=(const KvCHostInterfaceHandle&) = delete;
    ~KvCHostInterfaceHandle() {
        attempt([this] { (void)release(); });
    }

    [[nodiscard]] Handle get() const { return handle_; }
    /// Lets `operation` create the handle, and returns its status. What a failed operation leaves is no handle.
    template <typename Operation>
    [[nodiscard]] std::int32_t createBy(Operation&& operation) {
        const std::int32_t status = std::forward<Operation>(operation)(handle_);
        if (status != 0) {
            handle_ = nullptr;
        }
        return status;
    }
    /// Gives the handle back; its status, 0 when there is none.
    [[nodiscard]] std::int32_t release() {
        return handle_ != nullptr ? deleteHandle(errors_, std::exchange(handle_, nullptr)) : 0;
    }

private:
    KvCErrorListPool& errors_;
    Handle handle_ = nullptr;
};

using DeviceFilter = KvCHostInterfaceHandle<KvHIMFilterHandle, KvHIM_deleteFilter>;
using DeviceHandle = KvCHostInterfaceHandle<KvHIMDeviceHandle, KvHIM_deleteDeviceHandle>;
using FileTransferClient = KvCHostInterfaceHandle<KvHIMFTClientHandle, KvHIM_deleteFTClientHandle>;
