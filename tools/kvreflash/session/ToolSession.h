#pragma once

#include "CallWatch.h"
#include "EventLog.h"
#include "KvIArchive.h"
#include "KvISession.h"
#include "PlainProgress.h"
#include "QuietFilter.h"
#include "RunningUpdate.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a command asks of its session, and where messages and events go.
struct SessionRequest {
    KvNReflasher::KvTOptions options{};
    /// Folders of the emulated targets to be served.
    std::vector<std::string> emulatedTargets;
    /// Where messages, and what the tool adds to them, are shown.
    std::FILE* textStream = stdout;
    /// The tool needs the messages for itself, too.
    bool keepsMessages = false;
    /// Only results and errors are shown.
    bool isQuiet = false;
    /// A line for every tenth of a phase.
    bool showsPlainProgress = false;
    /// File of the notifications, if they are to be written; "-": standard error.
    std::optional<std::string> eventsFile;
    /// Numbers, addresses, target paths or display names of elements that are left out of the update.
    std::vector<std::string> disabledElements;
    /// Elements for which the archive has a lower version are left out, too.
    bool leavesOutDowngrades = false;
    /// Gives up waiting for elements that have shown nothing new for so many seconds; 0: never.
    std::uint32_t stallLimit = 0;
    /// The conditions on which the archive is accepted; nothing if the session reads none.
    std::optional<KvNReflasher::KvTReleaseOptions> release;
    /// Which files that the inventory does not list are written.
    KvNReflasher::KvEUnlistedFiles unlistedFiles = KvNReflasher::KvEUnlistedFiles::always;
    /// Where runs are written down; nothing: nowhere.
    std::optional<KvNReflasher::KvTJournalOptions> journal;

    /// Takes the options of a plan that was made before; how they are shown stays.
    void takeOptions(KvNReflasher::KvTOptions planned) {
        planned.noProgress = options.noProgress;
        planned.verbose = options.verbose;
        options = std::move(planned);
    }
};

/// The one session of a command, with the outputs that its messages and events go to.
///
/// The library writes to standard output itself unless that would lose text or the tool must see the messages.
class ToolSession {
public:
    explicit ToolSession(SessionRequest request);
    ToolSession(const ToolSession&) = delete;
    ToolSession(ToolSession&&) = delete;
    ToolSession& operator=(const ToolSession&) = delete;
    ToolSession& operator=(ToolSession&&) = delete;
    ~ToolSession() = default;

    [[nodiscard]] KvISession* operator->() const { return session_.get(); }
    [[nodiscard]] KvISession& get() const { return *session_; }
    [[nodiscard]] const SessionRequest& request() const { return request_; }
    /// When the session was created.
    [[nodiscard]] std::chrono::system_clock::time_point begin() const { return begin_; }

    /// Creates the file of the events if one is wanted. Class output if that fails.
    [[nodiscard]] KvNReflasher::KvTVerdict openEvents();
    /// Lets the session write down what it does if a journal is kept: `command` as of KvTJournalOptions, `planId` and
    /// `resumes` as far as there are. Its verdict counts, unless nobody has asked for the folder: then a warning is
    /// said.
    [[nodiscard]] KvNReflasher::KvTVerdict openJournal(const std::string& command, const std::string& planId = {},
                                                       const std::string& resumes = {});
    /// The session writes down what it does.
    [[nodiscard]] bool keepsJournal() const { return keepsJournal_; }
    /// Folder and places of the journal, for those who read it; of none an empty folder.
    [[nodiscard]] KvNReflasher::KvTJournalOptions journal() const {
        return request_.journal.value_or(KvNReflasher::KvTJournalOptions());
    }
    /// Writes the end of the run into the journal. As openJournal().
    [[nodiscard]] KvNReflasher::KvTVerdict closeJournal(const KvNReflasher::KvTVerdict& verdict);
    /// Writes down what a verification has found.
    void writeVerification(const KvNReflasher::KvTVerification& verification) {
        const KvNReflasher::KvTVerdict verdict = verdictOf(verification);
        events_.writeVerification(verification, verdict);
        session_->journalVerification(verification, verdict);
    }
    /// Writes the verdict of the command and closes the file. Class output if something could not be written.
    [[nodiscard]] KvNReflasher::KvTVerdict endEvents(const KvNReflasher::KvTVerdict& verdict);
    /// Keeps the messages instead of showing them, from now on.
    void keepMessages();
    /// What was said so far, as bytes, as far as the tool has seen it.
    [[nodiscard]] const std::string& messages() const { return messages_; }
    /// Says a sentence of the tool's own that belongs to the session.
    void remark(const std::string& sentence);
    /// All of these sentences, one in a line.
    [[nodiscard]] const std::string& remarks() const { return remarks_; }

    /// Serves the emulated targets of the request, and prepares the session. True if it may run.
    [[nodiscard]] bool prepare();
    /// Says who vouches for the archive that was read.
    void remarkOnRelease();
    /// Runs the prepared session. True if it has succeeded.
    bool run();
    /// The user has asked an update to end.
    [[nodiscard]] bool isStopRequested() const { return update_ && update_->isStopRequested(); }
    /// Leaves the elements of the request out of the update, and shows what is left as showSelection() does. Class
    /// selection if the filters let none through, or if one that was named does not exist.
    [[nodiscard]] KvNReflasher::KvTVerdict select();
    /// Says which elements are downgraded, and writes the plan to the events.
    void showSelection();
    /// Prepares the session and runs it if it may run: what there is is shown even if the selection fails.
    /// Returns the verdict on both.
    [[nodiscard]] KvNReflasher::KvTVerdict prepareAndRun();
    /// The prepared session was run.
    [[nodiscard]] bool hasRun() const { return hasRun_; }

    /// Why it has failed so far.
    [[nodiscard]] KvNReflasher::KvTVerdict verdict() const;
    /// What the session has read of the archive.
    [[nodiscard]] KvNReflasher::KvTArchiveContent archiveContent() const;

private:
    static void takeMessage(const std::string& message, void* context);
    static void takeEvent(const KvNReflasher::KvTEvent& event, void* context);
    void onEvent(const KvNReflasher::KvTEvent& event);
    void sayStall(std::uint32_t seconds);
    [[nodiscard]] KvNReflasher::KvTVerdict asFarAsRequired(KvNReflasher::KvTVerdict verdict);

    const SessionRequest request_;
    const std::chrono::system_clock::time_point begin_ = std::chrono::system_clock::now();
    std::unique_ptr<KvISession> session_;
    EventLog events_;
    /// Where messages are shown; null: nowhere.
    std::FILE* shown_;
    std::string messages_;
    std::string remarks_;
    /// Class target if an emulated target cannot be served.
    KvNReflasher::KvTVerdict served_;
    PlainProgress progress_;
    QuietFilter quiet_;
    bool hasRun_ = false;
    bool keepsJournal_ = false;
    /// Of an update.
    std::optional<RunningUpdate> update_;
};
