#pragma once

#include "KvCDirectFileWriter.h"
#include "LaterUpdates.h"
#include "PhasePolling.h"
#include "TargetLock.h"
#include "TransferredFiles.h"
#include "UpdateContext.h"

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

/// The run of one phase on a locked target. The steps are called once each, in their order.
class KvCPhaseRun {
public:
    /// All must outlive the run; `transfers` receives a record of each transfer.
    KvCPhaseRun(const KvTUpdateContext& context, const KvCTargetLock& lock, KvCDirectFileWriter& directWriter,
                KvTPhaseList list, std::uint32_t phase, std::deque<KvTTransfer>& transfers)
        : context_(context), lock_(lock), directWriter_(directWriter), list_(std::move(list)),
          files_(context, lock, phase, transfers) {}

    /// Takes elements whose update file is missing out of the run; true if there are any.
    [[nodiscard]] bool checkFiles();
    void transferFiles();
    void startUpdates();
    /// Asks until no update of the phase is running any more or waiting is given up. Leaves the progress line open for
    /// the phase's verdict.
    void pollUpdates() { KvCPhasePolling(context_, list_).pollUpdates(); }
    /// Asks for the errors of the finished updates, closes the progress line with the phase's verdict, and cancels
    /// later updates on boards where one failed.
    void collectErrors(KvCLaterUpdates& laterUpdates);
    void deleteRemoteFiles();

private:
    [[nodiscard]] bool transferFile(const KvTUpdateElement& element, const KvCInventoryAddress& system);
    void writeDirectly(const KvTUpdateElement& element);
    [[nodiscard]] bool putFile(const KvTUpdateElement& element, std::vector<std::wstring>& messages);
    [[nodiscard]] bool writeFile(const KvTUpdateElement& element, std::vector<std::wstring>& messages);
    void startUpdate(const KvTUpdateElement& element);
    [[nodiscard]] bool succeeded(const KvTUpdateElement& element) const;
    void askForErrors(const KvTUpdateElement& element) const;
    [[nodiscard]] KvCInventoryRootHandle* rootHandle() const { return context_.inventory.rootHandle(); }

    const KvTUpdateContext& context_;
    const KvCTargetLock& lock_;
    KvCDirectFileWriter& directWriter_;
    KvTPhaseList list_;
    KvCTransferredFiles files_;
};
