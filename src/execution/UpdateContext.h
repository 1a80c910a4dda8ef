#pragma once

#include "FileWatch.h"
#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvTCallbacks.h"
#include "KvTOptions.h"
#include "UpdateControl.h"

class KvCConsoleWriter;

/// What the steps of an update work with. All must outlive the context.
struct KvTUpdateContext {
    const KvCConsoleWriter& writer;
    const KvTCallbacks& callbacks;
    const KvNReflasher::KvTOptions& options;
    KvCFirmwareArchive& archive;
    KvCTargetInventory& inventory;
    /// The errors of the session.
    KvCErrorListPool& errors;
    KvCUpdateControl& control;
    const KvCFileWatch& watch;

    /// The archive entry of an element that has one.
    [[nodiscard]] const KvTArchiveFile& fileOf(const KvTUpdateElement& element) const {
        return archive.files()[element.archiveFileIndex];
    }
    [[nodiscard]] KvTElementRun& runOf(const KvTUpdateElement& element) const { return inventory.runOf(element.index); }

    /// Notes and reports that an element has failed.
    void fail(const KvTUpdateElement& element, KvNReflasher::KvEFailedCall call) const {
        runOf(element).updateState = updateFailed;
        runOf(element).failure.call = call;
        callbacks.notifyElementError(element.index);
    }
    void notifyEnd(const KvTUpdateElement& element, bool succeeded) const {
        callbacks.notifyEvent({KvNReflasher::KvEEvent::elementEnd, element.index, succeeded});
    }
};
