#pragma once

#include <cstdint>
#include <string>

// The interface as it was in the headers of version 1.0, with which clients were compiled that are in use. It stands
// here instead of these headers and never changes.

namespace KvNReflasher {

enum KvEMode : std::uint32_t {
    showVersion = 0,
    showArchiveVersion = 1,
    showArchiveContent = 2,
    dumpArchiveDescription = 3,
    showTargetElements = 4,
    connectOnly = 5,
    showUpdatePlan = 6,
    performUpdate = 7
};

struct KvTOptions {
    std::wstring archiveFolder;
    std::wstring descriptionFileName;
    std::wstring target;
    std::string boardTypeFilter;
    std::string serialNumberFilter;
    std::string elementNameFilter;
    bool forceUpdate;
    bool noProgress;
    bool verbose;
    bool configurationElements;
    bool disableCustomElements;
    bool reserved;
    std::uint32_t mode;
};

struct KvTUpdateElementInfo {
    std::uint32_t index = 0;
    std::wstring boardType;
    std::uint32_t serialNumber = 0;
    std::wstring boardName;
    std::wstring unitPath;
    std::uint32_t slot = 0;
    std::uint32_t slotCount = 0;
    std::wstring displayName;
    std::wstring typeName;
    bool isFileSystemElement = false;
    bool valid = false;
    bool active = false;
    std::wstring installedVersion;
    std::uint32_t custom = 0;
    std::uint32_t phase = 0;
    std::uint32_t hasArchiveFile = 0;
    std::uint32_t archiveFileIndex = 0;
    std::wstring availableVersion;
    bool checksumMismatch = false;
    bool disabled = false;
};

struct KvTArchiveFileInfo {
    std::string name;
    std::string version;
};

using KvTNumberCallback = void (*)(std::uint32_t value);
using KvTMessageCallback = void (*)(const std::wstring& text);

} // namespace KvNReflasher

class KvIReflasher {
public:
    static KvIReflasher* createInstance(KvNReflasher::KvTOptions options);

    KvIReflasher(const KvIReflasher&) = delete;
    KvIReflasher& operator=(const KvIReflasher&) = delete;
    virtual ~KvIReflasher() = default;

    virtual void setPhaseCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    virtual void setElementErrorCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    virtual void setProgressCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    virtual void setMessageCallback(KvNReflasher::KvTMessageCallback callback) = 0;
    virtual std::uint32_t prepare() = 0;
    virtual bool run() = 0;
    virtual void getArchiveInfo(std::wstring& archiveName, std::wstring& archiveVersion, std::wstring& productName,
                                std::wstring& formatVersion, std::wstring& archiveVariant) = 0;
    virtual std::uint32_t reservedQuery() = 0;
    virtual void getUpdateElements(KvNReflasher::KvTUpdateElementInfo*& elements, std::uint32_t& count) = 0;
    virtual void disableUpdateElement(std::uint32_t index) = 0;
    virtual void getArchiveFiles(KvNReflasher::KvTArchiveFileInfo*& files, std::uint32_t& count) = 0;
    virtual bool getRebootSupportStatus(std::uint32_t& status) = 0;
    virtual bool reboot() = 0;

protected:
    KvIReflasher() = default;
};
