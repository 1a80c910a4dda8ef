#pragma once

#include "KvTOptions.h"
#include "KvTQueryRecords.h"

#include <cstdint>
#include <string>

#if defined(_WIN32)
#if defined(KV_REFLASH_BUILD)
#define KV_REFLASH_API __declspec(dllexport)
#elif defined(KV_REFLASH_STATIC) // linked with parts of the library instead of the DLL
#define KV_REFLASH_API
#else
#define KV_REFLASH_API __declspec(dllimport)
#endif
#else
#define KV_REFLASH_API __attribute__((visibility("default")))
#endif

namespace KvNReflasher {

// Notification functions run on the thread of the session, within prepare(), run() or reboot(). They must not throw,
// and of the session they may only call the queries.

/// Notification with one number.
using KvTNumberCallback = void (*)(std::uint32_t value);
/// Receives a message, line ends included; `text` lasts as long as the call. UTF-8 from the archive and the target
/// stands in it decoded, bytes that are not well-formed one by one; on Windows one character per byte.
using KvTMessageCallback = void (*)(const std::wstring& text);

} // namespace KvNReflasher

/// One firmware update session with one target. An object is used from one thread, blocks until each operation is
/// done, and calls its notification functions on the caller's thread. Sessions on threads of their own may run at the
/// same time, but share the process's list of errors: an error of one makes run() of the others return false.
///
/// Order of calls: createInstance(); the callbacks; prepare(), once; when that returned 0 the queries,
/// disableUpdateElement() and run(), once; after a prepare that scanned the target (modes 4 to 7)
/// getRebootSupportStatus() and reboot(); delete.
///
/// After a prepare() that returned 1, and before the first one, there are no update elements, and getArchiveFiles()
/// returns the entries that were accepted before the failure. After a result of 2 the queries return everything, with
/// all elements disabled. A second prepare() begins anew: nothing of the first one is left but the handle of the
/// target, which is not given back. run() changes nothing that the queries return.
///
/// Texts go to standard output or to the message callback; a text may hold several lines. The description that mode 3
/// dumps comes as one text if there is a callback. Off Windows standard output is written as bytes: a program that has
/// used it for wide characters sees no messages there.
///
/// No operation throws; when memory is exhausted, an operation fails as its result says, and may do so without a
/// message. Arrays, texts and the table of virtual operations cross the boundary: client and library need the same
/// compiler family and runtime. The order of the virtual operations is part of the interface: new ones go to the end.
class KV_REFLASH_API KvIReflasher {
public:
    /// Makes a session for a copy of `options`. The caller deletes it, which releases everything that it holds of the
    /// target. Throws std::bad_alloc when memory is exhausted; null when the allocator itself yields null.
    static KvIReflasher* createInstance(KvNReflasher::KvTOptions options);

    KvIReflasher(const KvIReflasher&) = delete;
    KvIReflasher& operator=(const KvIReflasher&) = delete;
    virtual ~KvIReflasher() = default;

    /// Called before each phase of the update with its number from 0, and once with 0xFFFFFFFF after the last one.
    /// Null switches a notification off, as for the following three.
    virtual void setPhaseCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    /// Called with the index of an element each time that the update has failed for it.
    virtual void setElementErrorCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    /// Called with the percentage of the running phase: 0 to 100, above that only when the target says that more is
    /// done than there is to do.
    virtual void setProgressCallback(KvNReflasher::KvTNumberCallback callback) = 0;
    /// Receives every message instead of standard output.
    virtual void setMessageCallback(KvNReflasher::KvTMessageCallback callback) = 0;

    /// Reads the archive, reaches and scans the target, and plans, as the mode asks. Result: 0 ready; 1 failed, the
    /// reason was printed; 2 the archive does not support the target (mode 7).
    virtual std::uint32_t prepare() = 0;
    /// Prints what the mode asks for, or updates the target; then prints the errors collected since the session began.
    /// True when all went well and no error was collected.
    virtual bool run() = 0;

    /// Assigns the five texts. Before the archive was read the names are empty and the versions "0.0". When memory is
    /// exhausted, texts not yet assigned keep what they held.
    virtual void getArchiveInfo(std::wstring& archiveName, std::wstring& archiveVersion, std::wstring& productName,
                                std::wstring& formatVersion, std::wstring& archiveVariant) = 0;
    /// Always 0.
    virtual std::uint32_t reservedQuery() = 0;
    /// `elements` receives a new array of `count` records in the order of the element list, to be released with
    /// delete[]; null when there are none or memory is exhausted.
    virtual void getUpdateElements(KvNReflasher::KvTUpdateElementInfo*& elements, std::uint32_t& count) = 0;
    /// Leaves the element out of the update; an index past the end changes nothing. Indices depend on the filters of
    /// the session.
    virtual void disableUpdateElement(std::uint32_t index) = 0;
    /// `files` receives a new array of `count` records in the order of the description, to be released with delete[];
    /// null when there are none or memory is exhausted.
    virtual void getArchiveFiles(KvNReflasher::KvTArchiveFileInfo*& files, std::uint32_t& count) = 0;

    /// Returns whether the target can be rebooted; every status but 0 prints why not. `status`: 0 it can; 1 not known,
    /// no scan has found out; 2 not with the installed firmware; 3 not this device; 4 an error occurred while checking.
    /// True when the status is 0.
    virtual bool getRebootSupportStatus(std::uint32_t& status) = 0;
    /// Resets the target; prints why when it cannot. True when it was reset.
    virtual bool reboot() = 0;

protected:
    KvIReflasher() = default;
};
