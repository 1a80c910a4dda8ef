#pragma once

#include "Handles.h"
#include "KvDocuments.h"
#include "KvISession.h"
#include "KvRuns.h"
#include "KvTSavedPlan.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A session of a client in C: the session, and what the client has asked for.
class KvCSessionHandle : public KvCHandled {
public:
    /// Throws KvCCallFailure.
    explicit KvCSessionHandle(const kvr_session_options& options);
    /// The journal's run ends with the session.
    ~KvCSessionHandle() override;
    KvCSessionHandle(const KvCSessionHandle&) = delete;
    KvCSessionHandle& operator=(const KvCSessionHandle&) = delete;

    void setEventFunction(kvr_event_function function, void* context);
    [[nodiscard]] std::int32_t prepare();
    [[nodiscard]] std::int32_t disable(const std::string& element, std::uint32_t& found);
    [[nodiscard]] std::int32_t preflight();
    [[nodiscard]] std::int32_t run();
    void requestStop(std::uint32_t how);
    [[nodiscard]] std::int32_t verify(bool wasRebooted);
    [[nodiscard]] std::int32_t reboot();

    /// Throws KvCCallFailure if the target was not scanned.
    [[nodiscard]] const KvNReflasher::KvTPlan& plan() const;
    /// The verdict on everything so far.
    [[nodiscard]] KvNReflasher::KvTVerdict verdict() const;
    /// Throws KvCCallFailure if nothing was verified.
    [[nodiscard]] const KvNReflasher::KvTVerification& verification() const;
    [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }
    [[nodiscard]] KvISession& session() const { return *session_; }
    /// A document of kind KVR_DOCUMENT_...; nothing, with a `reason`, if it cannot be made.
    [[nodiscard]] std::optional<std::string> document(std::uint32_t kind, std::string& reason);
    /// Throws KvCCallFailure unless it is time for a call.
    void require(bool isInOrder) const;

    // What the client was given last.
    std::optional<KvNReflasher::KvTOutcome> outcome;
    std::string message;
    std::string runId;
    std::optional<KvNReflasher::KvTElementOutcome> elementOutcome;
    std::uint32_t elementOfOutcome = 0;
    std::string verificationMessage;
    std::vector<KvNReflasher::KvTArchiveEntry> entries;
    std::string documentText;

private:
    /// How far the client has come.
    enum class Step : std::uint8_t { created, preparing, prepared, refused, ran };

    void decide(const kvr_session_options& options);
    [[nodiscard]] KvNReflasher::KvTVerdict openJournal();
    [[nodiscard]] bool select();
    [[nodiscard]] bool hasFilters() const;
    [[nodiscard]] std::string explanations();
    [[nodiscard]] std::string report(const char* command);
    void notify(const kvr_event& event) const;

    std::uint32_t flags_;
    KvNReflasher::KvTOptions options_{};
    KvNReflasher::KvEUnlistedFiles unlistedFiles_ = KvNReflasher::KvEUnlistedFiles::always;
    std::optional<KvNReflasher::KvTSavedPlan> savedPlan_;
    std::optional<KvNReflasher::KvTRunRecord> resumed_;
    std::optional<KvNReflasher::KvTJournalOptions> journal_;
    std::unique_ptr<KvISession> session_;
    kvr_event_function function_ = nullptr;
    void* context_ = nullptr;
    std::atomic<Step> step_ = Step::created;
    std::vector<std::string> faults_;
    /// What the session does not know: a journal that cannot be written, and a verification.
    KvNReflasher::KvTVerdict ownVerdict_;
    std::optional<KvNReflasher::KvTVerification> verification_;
    std::string messages_;
    std::string begin_;
};
