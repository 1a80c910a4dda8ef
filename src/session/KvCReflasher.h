#pragma once

#include "KvCConsoleWriter.h"
#include "KvCPreparation.h"
#include "KvCUpdateDriver.h"
#include "KvIReflasher.h"
#include "KvTCallbacks.h"

#include <cstddef>

/// A session: owns every record of it and wires them together. Members are destroyed in reverse order, which gives the
/// device handle back before the inventory's root handle.
class KvCReflasher : public KvIReflasher {
public:
    /// Allocates a block of `size` bytes, as the ordinary operator new does.
    using Allocate = void* (*)(std::size_t size);

    /// Makes a session in a block of `allocate`; null when that yields null.
    [[nodiscard]] static KvCReflasher* create(KvNReflasher::KvTOptions options, Allocate allocate);

    void setPhaseCallback(KvNReflasher::KvTNumberCallback callback) override { callbacks_.phase = callback; }
    void setElementErrorCallback(KvNReflasher::KvTNumberCallback callback) override {
        callbacks_.elementError = callback;
    }
    void setProgressCallback(KvNReflasher::KvTNumberCallback callback) override { callbacks_.progress = callback; }
    void setMessageCallback(KvNReflasher::KvTMessageCallback callback) override { callbacks_.message = callback; }
    std::uint32_t prepare() override;
    bool run() override;
    void getArchiveInfo(std::wstring& archiveName, std::wstring& archiveVersion, std::wstring& productName,
                        std::wstring& formatVersion, std::wstring& archiveVariant) override;
    std::uint32_t reservedQuery() override { return 0; }
    void getUpdateElements(KvNReflasher::KvTUpdateElementInfo*& elements, std::uint32_t& count) override;
    void disableUpdateElement(std::uint32_t index) override;
    void getArchiveFiles(KvNReflasher::KvTArchiveFileInfo*& files, std::uint32_t& count) override;
    bool getRebootSupportStatus(std::uint32_t& status) override;
    bool reboot() override;

protected:
    explicit KvCReflasher(KvNReflasher::KvTOptions options);

private:
    [[nodiscard]] bool runSession();
    [[nodiscard]] bool runMode(KvCErrorListPool& errors);

    const KvNReflasher::KvTOptions options_;
    KvTCallbacks callbacks_;
    const KvCConsoleWriter writer_{callbacks_};
    KvCPreparation preparation_{writer_, options_};
    KvCUpdateDriver driver_{writer_, callbacks_, options_, preparation_.planner(), preparation_.targetAccess()};
};
