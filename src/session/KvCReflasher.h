#pragma once

#include "ExhaustedMemory.h"
#include "Explanation.h"
#include "KvCConsoleWriter.h"
#include "KvCPreparation.h"
#include "KvCUpdateDriver.h"
#include "KvISession.h"
#include "KvTCallbacks.h"
#include "SessionJournal.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A session: owns every record of it and wires them together. Members are destroyed in reverse order, which gives the
/// device handle back before the inventory's root handle.
class KvCReflasher : public KvISession {
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

    void setEventFunction(KvNReflasher::KvTEventFunction function, void* context) override {
        callbacks_.eventFunction = function;
        callbacks_.eventContext = context;
    }
    void setMessageFunction(KvNReflasher::KvTMessageFunction function, void* context) override {
        callbacks_.messageFunction = function;
        callbacks_.messageContext = context;
    }
    void setTreeVisitor(KvNReflasher::KvTTreeVisitor visitor, void* context) override {
        preparation_.inventory().setTreeVisitor(visitor, context);
    }
    void findHiddenElements() override { preparation_.inventory().findHiddenElements(); }
    [[nodiscard]] const KvNReflasher::KvTPlan* plan() const override;
    [[nodiscard]] std::vector<KvNReflasher::KvTArchiveEntry> archiveEntries() const override;
    [[nodiscard]] KvNReflasher::KvTExplanation explain(std::uint32_t index) override;
    [[nodiscard]] std::vector<KvNReflasher::KvTHiddenElement> hiddenElements() const override;
    [[nodiscard]] std::vector<KvNReflasher::KvTForeignPath> foreignPaths() const override;
    KvNReflasher::KvTDisabling disableElement(const std::string& element) override;
    [[nodiscard]] std::vector<std::string> preflight() override;
    [[nodiscard]] KvNReflasher::KvTOutcome outcome() const override;
    [[nodiscard]] KvNReflasher::KvTLook look() override;
    [[nodiscard]] KvNReflasher::KvTElementOutcome outcomeOf(std::uint32_t index) const override;
    void requestStop(KvNReflasher::KvEStop how) noexcept override { control_.requestStop(how); }
    [[nodiscard]] KvNReflasher::KvTActivity activity() const override { return control_.activity(); }
    void setStallLimit(std::uint32_t seconds) override { control_.setStallLimit(seconds); }
    void leaveOutDowngrades() override;
    void keepDescription() override { preparation_.archive().keepText(); }
    [[nodiscard]] std::vector<KvNReflasher::KvTFinding> findings() override;
    void setRelease(const KvNReflasher::KvTReleaseOptions& options) override;
    [[nodiscard]] std::optional<KvNReflasher::KvTRelease> release() const override;
    void watchFiles() override;
    KvNReflasher::KvTVerdict openJournal(const KvNReflasher::KvTJournalOptions& options) override;
    void decideUnlistedFiles(KvNReflasher::KvEUnlistedFiles which,
                             const KvNReflasher::KvTJournalOptions& journal) override;
    [[nodiscard]] std::optional<KvNReflasher::KvTSavedPlan> planToSave(std::string& reason) override;
    [[nodiscard]] std::vector<std::string> holdTo(const KvNReflasher::KvTSavedPlan& plan,
                                                  const KvNReflasher::KvTJournalOptions& journal) override;
    [[nodiscard]] KvNReflasher::KvTResumption resume(const KvNReflasher::KvTRunRecord& run, bool redo) override;
    void journalVerification(const KvNReflasher::KvTVerification& verification,
                             const KvNReflasher::KvTVerdict& verdict) override;
    KvNReflasher::KvTVerdict closeJournal(const KvNReflasher::KvTVerdict& verdict, std::int32_t exitCode) override;
    [[nodiscard]] std::string runId() const override;

protected:
    explicit KvCReflasher(KvNReflasher::KvTOptions options);

private:
    [[nodiscard]] bool runSession();
    [[nodiscard]] bool runMode();
    [[nodiscard]] bool resetTarget();
    /// Notes a failure of the session. When memory is exhausted it has no message.
    template <typename MakeMessage>
    void noteFailure(KvNReflasher::KvEFailure failure, MakeMessage&& makeMessage) {
        KvNReflasher::KvTVerdict verdict{failure, {}};
        attempt([&] { verdict.message = makeMessage(); });
        verdict_.add(std::move(verdict));
    }
    /// Of a failure that has no other reason.
    void noteOutOfMemory() {
        if (verdict_.isSuccess()) {
            noteFailure(KvNReflasher::KvEFailure::errors, [] { return std::string("out of memory"); });
        }
    }
    void concludeRun(bool succeeded);
    [[nodiscard]] KvNReflasher::KvTVerdict verdictOfUpdate() const;
    [[nodiscard]] KvNReflasher::KvTVerdict verdictOfUnfinished(const char* why, KvNReflasher::KvEFailure failure) const;
    [[nodiscard]] KvNReflasher::KvTVerdict verdictOfElements() const;
    [[nodiscard]] KvNReflasher::KvTOutcome makeOutcome() const;
    [[nodiscard]] KvNReflasher::KvEStage stage() const;
    [[nodiscard]] std::vector<std::string> collectedErrors() const;
    [[nodiscard]] KvNReflasher::KvTElementOutcome plannedOutcome(const KvNReflasher::KvTPlannedElement& planned,
                                                                 const KvTUpdateElement& element) const;
    [[nodiscard]] std::vector<KvNReflasher::KvTElementOutcome> elementOutcomes() const;
    [[nodiscard]] std::vector<KvNReflasher::KvTFileOutcome> fileOutcomes() const;

    [[nodiscard]] bool beginJournal();
    void journalEvent(const KvNReflasher::KvTEvent& event);
    [[nodiscard]] std::string writtenDigest(const KvNReflasher::KvTEvent& event,
                                            const KvNReflasher::KvTElementOutcome& outcome);
    [[nodiscard]] KvNReflasher::KvTSavedPlan planBasis() const;
    [[nodiscard]] KvNReflasher::KvTSavedPlan planAsItStands() const;
    void noteContents(KvNReflasher::KvTSavedPlan& saved,
                      const std::function<bool(const KvNReflasher::KvTPlannedElement&)>& isWatched);
    [[nodiscard]] KvNReflasher::KvTFileDigest digestOf(const std::string& name, std::uint32_t fileIndex);
    [[nodiscard]] std::vector<std::string> applyOptions(const KvNReflasher::KvTDecidingOptions& options,
                                                        const KvNReflasher::KvTJournalOptions& journal);
    void addContentsOf(const KvNReflasher::KvTSavedPlan& earlier, KvNReflasher::KvTSavedPlan& now);
    [[nodiscard]] std::vector<KvNReflasher::KvTResumedElement>
    resumedElements(const KvNReflasher::KvTRunRecord& run) const;
    void leaveOutDone(const KvNReflasher::KvTResumedElement& resumed, bool redo);
    void noteStale(const char* what, const std::vector<std::string>& differences);

    const KvNReflasher::KvTOptions options_;
    KvTCallbacks callbacks_;
    const KvCConsoleWriter writer_{callbacks_};
    /// The errors of the session, of which the error manager has one list.
    KvCErrorListPool& errors_ = KvCErrorManager::getInstance()->getMasterErrorList();
    KvCPreparation preparation_{writer_, options_, errors_};
    KvCUpdateControl control_;
    KvCFileWatch fileWatch_{preparation_.archive()};
    KvCUpdateDriver driver_{{writer_, callbacks_, options_, preparation_.archive(), preparation_.inventory(), errors_,
                             control_, fileWatch_},
                            preparation_.planner(),
                            preparation_.targetAccess()};
    KvCSessionJournal journal_;
    // What the client has left out.
    std::vector<std::string> disabledElements_;
    bool leavesOutDowngrades_ = false;
    KvNReflasher::KvEUnlistedFiles unlistedFiles_ = KvNReflasher::KvEUnlistedFiles::always;
    /// Made when an explanation is first asked for.
    std::optional<KvCExplainer> explainer_;
    /// What has come after prepare().
    KvNReflasher::KvTVerdict verdict_;
    std::optional<KvNReflasher::KvEStage> stage_;
    /// The errors that belong to no element.
    std::vector<KvNReflasher::KvTErrorInfo> otherErrors_;
};
