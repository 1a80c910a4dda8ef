#pragma once

#include "KvCInventoryAddress.h"
#include "KvCInventoryItem.h"
#include "KvCString.h"
#include "KvCVersion.h"
#include "KvTOutcome.h"
#include "OwnedErrorList.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Archive file index of an element that no archive entry matches.
inline constexpr std::uint32_t noArchiveFile = 0xFFFFFFFF;

/// Location of an element that takes any target path.
inline constexpr const char* anyLocation = "*";

/// Where an element stands in the running update.
enum KvEUpdateState : std::uint32_t {
    notToBeUpdated = 0, ///< also when its update file is missing
    toBeUpdated = 1,
    updateStarted = 2,
    updateFailed = 3,
    updateCancelled = 4, ///< an earlier update on the same board failed
    updateFinished = 5   ///< the target may still have reported errors
};

/// The error lists of an element.
enum KvEErrorListIndex : std::size_t {
    callErrors = 0,  ///< of transfer, start and status calls
    targetErrors = 1 ///< reported by the target for the finished update
};

/// Why the update of an element did not succeed.
struct KvTElementFailure {
    KvNReflasher::KvEFailedCall call = KvNReflasher::KvEFailedCall::none;
    /// The update file was missing when the phase began.
    bool fileMissing = false;
    /// What was said of a file that could not be written, without line end; UTF-8.
    std::string message;
    /// The errors of writing a file directly.
    std::vector<KvNReflasher::KvTErrorInfo> writeErrors;
};

/// What is decided on an element before an update; only planning and the disabling of elements change it.
struct KvTElementPlan {
    /// Index of the matching archive entry, or noArchiveFile.
    std::uint32_t archiveFileIndex = noArchiveFile;
    /// Meaningful for an enabled element with an archive entry.
    std::uint32_t phase = 0;
    bool upToDate = false;
    /// The element takes no part in the update.
    bool disabled = false;
    /// Why the matching entry has to be installed; empty if it need not be, or if there is none.
    std::vector<KvNReflasher::KvEReason> outOfDateReasons;
    /// No entry matches, but one would that is ignored for its feature level.
    bool matchesIgnoredEntry = false;

    [[nodiscard]] bool hasArchiveFile() const { return archiveFileIndex != noArchiveFile; }
};

/// What the target has answered to a status query.
struct KvTTargetAnswer {
    /// 1: the update runs; 2: it has succeeded; anything else: it has failed.
    std::uint32_t state = 0;
    /// How far it has come.
    /// @{
    std::uint32_t done = 0;
    std::uint32_t total = 0;
    /// @}

    friend bool operator==(const KvTTargetAnswer&, const KvTTargetAnswer&) = default;
};

/// How far the update of an element has come; only the running update changes it.
struct KvTElementRun {
    KvEUpdateState updateState = notToBeUpdated;
    /// Failed status queries in a row.
    std::uint32_t pollFailures = 0;
    /// Nothing if the target has answered no status query.
    std::optional<KvTTargetAnswer> targetAnswer;
    /// The target was asked for the errors of the finished update.
    bool errorsCollected = false;
    /// Its update file was watched and has changed before its transfer has ended.
    bool fileChanged = false;
    KvTElementFailure failure;

    /// The running update has begun with the element, whatever came of it: it was neither left out nor cancelled.
    [[nodiscard]] bool wasTried() const {
        return updateState == updateStarted || updateState == updateFailed || updateState == updateFinished;
    }
};

/// One updatable element: its board and unit and what the scan has found, which stays as it is; its plan; its run.
struct KvTUpdateElement : KvTElementPlan, KvTElementRun {
    /// Grouping key of the element list. Points into the scanned tree: not to be followed after the scan.
    const KvCInventoryItem* unitItem = nullptr;

    // Board.
    KvCInventoryAddress boardAddress;
    KvCString boardType;
    KvCString boardVariant;
    std::uint32_t boardId = 0;
    /// The upper 8 bits may hold a sub-number.
    std::uint32_t serialNumber = 0;
    std::uint32_t slot = 0;
    /// 0: the board has no slot.
    std::uint32_t slotCount = 0;
    /// Name or type of the board, and its variant in parentheses.
    KvCString boardName;

    // Unit.
    KvCString unitName;
    KvCString unitInstanceName;
    KvCString rackName;

    // Element.
    /// Position in the element list, from 0.
    std::uint32_t index = 0;
    /// A file of the target's file system rather than an element that the target updates itself.
    bool isFileSystemElement = false;
    KvCInventoryAddress elementAddress;
    std::uint32_t elementId = 0;
    /// Path of a file-system element, or anyLocation.
    KvCString location;
    std::uint32_t hwCompatibilityId = 0;
    std::uint32_t swCompatibilityId = 0;
    std::uint32_t typeId = 0;
    std::uint32_t custom = 0;
    /// The element is a configuration element.
    bool configured = true;
    /// False also if the element does not have the parameter.
    bool valid = false;
    bool active = false;
    bool hasValid = false;
    bool hasActive = false;
    bool hasChecksum = false;
    /// CRC-32 of the installed image.
    std::uint32_t checksumCrc32 = 0;
    /// The installed version.
    KvCVersion version;
    bool hasVersion = false;
    KvCString name;
    KvCString versionHistory;
    KvCString displayName;
    KvCString typeName;

    /// Indexed by KvEErrorListIndex; created once the element is in the list.
    std::array<KvCOwnedErrorList, 2> errorLists;

    /// An error was collected for this element. Needs the lists of createErrorLists().
    [[nodiscard]] bool hasErrors() const {
        return errorLists[callErrors]->getErrorCount() != 0 || errorLists[targetErrors]->getErrorCount() != 0;
    }
    void createErrorLists() {
        for (KvCOwnedErrorList& list : errorLists) {
            list = KvCOwnedErrorList::create();
        }
    }
};
