#pragma once

#include "KvCErrorManager.h"
#include "KvPlatformExport.h"

#include <cstdint>

// Host side of the device access service: finding devices, resetting them, and their file systems. Statuses: 0
// success, 21 buffer too small, 33 the service cannot be reached, 46 the installed service is outdated; other values
// are the service's own error codes. A failed operation adds to `errors`, but for a service that cannot be reached or
// is outdated: its status is all that any operation returns then, the ones that count bytes included. Handles belong to
// the caller and are released by the matching delete operation, which ends them whatever its status.

struct KvHIMSFilter;
struct KvHIMSDevice;
struct KvHIMSFTClient;
using KvHIMFilterHandle = KvHIMSFilter*;
using KvHIMDeviceHandle = KvHIMSDevice*;
using KvHIMFTClientHandle = KvHIMSFTClient*;

/// One device as the service lists it.
struct KvHIMSDeviceInfo {
    /// IPv4 address, bytes in network order.
    std::uint32_t ipAddress = 0;
    /// The service's own number of the device.
    std::uint32_t deviceNumber = 0;
};

/// Called during a transfer with the bytes done and in all and the caller's context. It may use the library, but must
/// not wait for another thread that does.
using KvHIMProgress = void (*)(std::int64_t done, std::int64_t total, void* context);

/// Creates a device filter of `kind`, a number of the service.
KV_PLATFORM_API std::int32_t KvHIM_createFilter(KvCErrorListPool& errors, KvHIMFilterHandle& filter,
                                                std::uint32_t kind);
/// Sets parameter `parameter` of the filter to the `size` bytes at `value`. Parameter 6 is the device's IPv4 address,
/// bytes in network order.
KV_PLATFORM_API std::int32_t KvHIM_setFilterParameter(KvCErrorListPool& errors, KvHIMFilterHandle filter,
                                                      std::uint32_t parameter, const void* value, std::uint32_t size);
/// Makes the parameters count; called once, after they were set and before the devices are listed.
KV_PLATFORM_API std::int32_t KvHIM_applyFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter);
/// Lists the devices that pass the filter. `count` receives their number; when `capacity` records are too few, none
/// is written and the status is 21.
KV_PLATFORM_API std::int32_t KvHIM_getDeviceList(KvCErrorListPool& errors, KvHIMFilterHandle filter,
                                                 KvHIMSDeviceInfo* devices, std::int32_t capacity, std::int32_t& count);
/// Releases a filter; it is gone whatever the status.
KV_PLATFORM_API std::int32_t KvHIM_deleteFilter(KvCErrorListPool& errors, KvHIMFilterHandle filter);

/// Opens a device that KvHIM_getDeviceList() has listed; the filter may be gone.
KV_PLATFORM_API std::int32_t KvHIM_createDeviceHandle(KvCErrorListPool& errors, const KvHIMSDeviceInfo& info,
                                                      KvHIMDeviceHandle& device);
/// Releases a device handle; it is gone whatever the status.
KV_PLATFORM_API std::int32_t KvHIM_deleteDeviceHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device);
/// Resets the device at once, whatever it is doing. `resetKind` is a number of the service.
KV_PLATFORM_API std::int32_t KvHIM_FORCE_resetDevice(KvCErrorListPool& errors, KvHIMDeviceHandle device,
                                                     std::uint32_t resetKind);

/// Creates a file transfer client on the device.
KV_PLATFORM_API std::int32_t KvHIM_createFTClientHandle(KvCErrorListPool& errors, KvHIMDeviceHandle device,
                                                        KvHIMFTClientHandle& client);
/// Releases a file transfer client; it is gone whatever the status.
KV_PLATFORM_API std::int32_t KvHIM_deleteFTClientHandle(KvCErrorListPool& errors, KvHIMFTClientHandle client);
/// Creates folder `name` in the target's folder `parent`; a folder that exists already is a failure. `reserved` is
/// null.
KV_PLATFORM_API std::int32_t KvHIM_makeDir(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client,
                                           const char* parent, const char* name);
/// Writes the local file `localPath` as `name` into the target's folder `folder`, replacing what is there. Result:
/// the number of bytes written, negative on failure. `reserved`, `progress` and `context` may be null.
KV_PLATFORM_API std::int64_t KvHIM_putFileU(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client,
                                            const wchar_t* localPath, const char* folder, const char* name,
                                            KvHIMProgress progress, void* context);
/// Renames a file in the target's folder `folder`, replacing what has the new name. Result: negative on failure.
KV_PLATFORM_API std::int32_t KvHIM_renameFile(KvCErrorListPool& errors, void* reserved, KvHIMFTClientHandle client,
                                              const char* folder, const char* oldName, const char* newName);
