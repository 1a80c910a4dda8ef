#pragma once

#include "KvCErrorManager.h"
#include "KvCInventoryManager.h"
#include "KvEmulation.h"
#include "KvHostInterface.h"
#include "KvNInventoryIDs.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace EmulationErrorCodes {
inline constexpr std::uint32_t valueUnusable = 0x2001;
inline constexpr std::uint32_t targetLocked = 0x2002;
inline constexpr std::uint32_t notFound = 0x2003;
inline constexpr std::uint32_t fileAccess = 0x2004;
inline constexpr std::uint32_t bufferTooSmall = 0x2005;
inline constexpr std::uint32_t notAnIpV4Address = 0x2006;
inline constexpr std::uint32_t notAnInventoryTree = 0x2007;
inline constexpr std::uint32_t wrongHandle = 0x2008;
inline constexpr std::uint32_t wrongUpdateState = 0x2009;
inline constexpr std::uint32_t fault = 0x2FFF;
} // namespace EmulationErrorCodes

/// A client of the emulated service, as far as a test needs one. Its handles are released at the end; every operation
/// expects to succeed unless it says otherwise.
class EmulationTest : public testing::Test {
protected:
    using RemoteFile = KvNInventoryManager::KvSRemoteFileHandle;

    void SetUp() override;
    /// Releases everything that is still held and expects a clean ledger.
    void TearDown() override;

    /// The list that operations get unless a test gives them another.
    [[nodiscard]] KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    /// The codes of the errors so far, which are then forgotten.
    std::vector<std::uint32_t> takeErrorCodes();
    /// The texts of the errors so far, which are then forgotten.
    std::vector<std::string> takeErrorTexts();

    static KvCInventoryManager& manager() { return *KvCInventoryManager::getInstance(); }

    // The inventory side.
    KvCInventoryRootHandle* openRoot(const char* address = "127.0.0.1");
    void closeRoot();
    /// Takes the lock at HCN[1]; 0: it worked.
    std::uint32_t tryLock();
    void lock();
    std::uint32_t tryUnlock();
    void unlock();
    RemoteFile transfer(const std::string& content);
    std::uint32_t tryUpdate(std::uint32_t elementId, const RemoteFile& file);
    void startUpdate(std::uint32_t elementId, const RemoteFile& file);

    struct Status {
        std::uint32_t state = 0;
        std::uint32_t done = 0;
        std::uint32_t total = 0;
        friend bool operator==(const Status&, const Status&) = default;
        friend void PrintTo(const Status& status, std::ostream* out) {
            *out << "state " << status.state << ", " << status.done << " of " << status.total;
        }
    };
    std::uint32_t tryQuery(std::uint32_t elementId, Status& status);
    Status query(std::uint32_t elementId);
    /// Transfers the content, updates the element with it and queries it until it is done; the final state.
    std::uint32_t update(std::uint32_t elementId, const std::string& content);
    /// Opens, locks, updates, unlocks and closes.
    void updateOnce(std::uint32_t elementId, const std::string& content);

    /// What a new scan shows of the element with that address below the root.
    struct Shown {
        std::string version;
        std::uint32_t checksum = 0;
        std::uint8_t valid = 0;
        std::uint8_t active = 0;
    };
    Shown scanElement(const KvCInventoryAddress& address);

    // The host interface side.
    KvHIMFilterHandle makeFilter(const char* address = nullptr);
    /// The number of devices that a whole list session finds.
    std::int32_t countDevices(const char* address = nullptr);
    KvHIMDeviceHandle openDevice(const char* address = "127.0.0.1");
    KvHIMFTClientHandle openTransferClient();
    void closeDevice();
    void resetDevice();

    KvCInventoryRootHandle* root = nullptr;
    void* lockHandle = nullptr;
    KvHIMDeviceHandle device = nullptr;
    KvHIMFTClientHandle client = nullptr;
    ScratchFolder files;

    /// The address of the board that the operations above use, and of the node that they lock.
    KvCInventoryAddress boardAddress = KvNInventoryIDs::HCN;
};

/// `path` as operations take it.
[[nodiscard]] std::wstring wide(const std::string& path);
/// The number of an address in network order.
[[nodiscard]] std::uint32_t ipNumber(const char* address);
