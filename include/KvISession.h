#pragma once

#include "KvIArchive.h"
#include "KvIReflasher.h"
#include "KvRuns.h"
#include "KvTOutcome.h"
#include "KvTPlan.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class KvCInventoryItem;

namespace KvNReflasher {

/// Subject of an event.
enum class KvEEvent : std::uint8_t {
    /// A phase begins; `value` is its number from 0, or 0xFFFFFFFF after the last one.
    phase,
    /// `value` is the percentage of the running phase, as for the progress callback.
    progress,
    /// An update has failed for the element `value`.
    elementError,
    /// The target is locked.
    locked,
    /// The lock was given back.
    unlocked,
    /// An update file was transferred; `value` is its file index, `succeeded` whether the target has it.
    transfer,
    /// The update of the element `value` begins.
    elementStart,
    /// The update of the element `value` has ended; `succeeded` whether it succeeded.
    elementEnd,
    /// The started updates have shown nothing new for `value` seconds. The outcome lists them as in progress.
    stalled
};

/// How an update is asked to end.
enum class KvEStop : std::uint8_t {
    /// Nothing new begins: no phase, transfer, update or file. What has begun is awaited.
    finishBegun,
    /// Waiting for updates that have begun is given up, too. Their update files stay on the target.
    giveUp
};

/// The call into the device access libraries that a running update waits for.
struct KvTActivity {
    /// Name of the operation, such as "updateStatus2"; null if none is under way.
    const char* call = nullptr;
    /// Index of the element that it is made for; nothing if it is made for the target as a whole.
    std::optional<std::uint32_t> element;
    /// The moment at which it was made.
    std::chrono::steady_clock::time_point begin;
};

/// Something that happens while a session runs.
struct KvTEvent {
    /// The kind of the event.
    KvEEvent event = KvEEvent::phase;
    /// Its number, as of KvEEvent; 0 if it has none.
    std::uint32_t value = 0;
    /// False if what has ended has failed.
    bool succeeded = true;
};

/// Receives events; `context` is what was given with the function. Unknown events are to be ignored.
using KvTEventFunction = void (*)(const KvTEvent& event, void* context);
/// Receives a message as it would be written to standard output, line ends included: bytes, UTF-8 as far as its parts
/// are. `text` lasts as long as the call.
using KvTMessageFunction = void (*)(const std::string& text, void* context);
/// Receives the root of the scanned inventory tree, which lasts as long as the call.
using KvTTreeVisitor = void (*)(const KvCInventoryItem& root, void* context);

/// A path of the archive that leads out of the place that it belongs to.
struct KvTForeignPath {
    /// Position of the entry in the description's "files", from 0.
    std::uint32_t descriptionIndex = 0;
    /// As the description writes it.
    std::string path;
    /// True: an update file outside the archive folder. False: a target path outside the target's root folder.
    bool isRead = false;
};

/// Result of a request to disable an element.
struct KvTDisabling {
    /// The elements that were named. Exactly one: it is disabled. Otherwise none is.
    std::vector<std::uint32_t> elements;
    /// True if the element is disabled.
    [[nodiscard]] bool isDone() const { return elements.size() == 1; }
};

} // namespace KvNReflasher

/// A session that can be asked what it knows: the plan, the outcome, and what the target reports afterwards. Everything
/// that KvIReflasher says holds here, too: thread, order of calls, messages, exhausted memory.
///
/// Plan and outcome are values of this session. Nothing is read, scanned or planned again for them.
///
/// New operations go to the end.
class KV_REFLASH_API KvISession : public KvIReflasher {
public:
    /// As KvIReflasher::createInstance().
    static KvISession* createInstance(KvNReflasher::KvTOptions options);
    /// The version of the library, as the banner shows it. Throws std::bad_alloc when memory is exhausted.
    static std::string version();

    // Before prepare().

    /// Receives events beside the callbacks; null switches it off. An event comes right after the callback of the same
    /// meaning.
    virtual void setEventFunction(KvNReflasher::KvTEventFunction function, void* context) = 0;
    /// Receives every message instead of standard output and of the message callback; null switches it off.
    virtual void setMessageFunction(KvNReflasher::KvTMessageFunction function, void* context) = 0;
    /// Shows the scanned tree to `visitor` once, inside prepare(), before it is released. Not called if the scan fails.
    virtual void setTreeVisitor(KvNReflasher::KvTTreeVisitor visitor, void* context) = 0;
    /// Lets prepare() find out which elements the options hide, from the tree that it scans anyway.
    virtual void findHiddenElements() = 0;

    // After prepare().

    /// The plan; null unless the last prepare() has scanned the target. It changes when an element is disabled, and is
    /// valid until the next prepare(). In the modes 4 and 5 it lists what was found, without decisions.
    [[nodiscard]] virtual const KvNReflasher::KvTPlan* plan() const = 0;
    /// The accepted entries of the archive; empty if it was not read or memory is exhausted.
    [[nodiscard]] virtual std::vector<KvNReflasher::KvTArchiveEntry> archiveEntries() const = 0;
    /// The entries that were tried for the element of this index, found by the rule that has planned. Empty if there is
    /// no such element or no archive.
    [[nodiscard]] virtual KvNReflasher::KvTExplanation explain(std::uint32_t index) = 0;
    /// The elements that the options hide, in the order of the target. Empty unless findHiddenElements() was called or
    /// the options hide all elements.
    [[nodiscard]] virtual std::vector<KvNReflasher::KvTHiddenElement> hiddenElements() const = 0;
    /// The paths of the archive that lead out of the archive folder or out of the target's root, in the order of the
    /// entries.
    [[nodiscard]] virtual std::vector<KvNReflasher::KvTForeignPath> foreignPaths() const = 0;

    // Between prepare() and run().

    /// Leaves an element out of the update. `element` (UTF-8): digits only are its index; anything else is compared
    /// byte by byte with the inventory addresses, then with the target paths of files that are not listed, then with
    /// the display names; the first of these that names an element counts.
    virtual KvNReflasher::KvTDisabling disableElement(const std::string& element) = 0;
    /// Checks what an update of this plan would use: each update file must exist, be readable, and state no other
    /// version or checksum than the entry; and no error may have been collected. Returns a sentence for each fault. If
    /// there is any, the outcome's verdict says so and run() must not be called.
    [[nodiscard]] virtual std::vector<std::string> preflight() = 0;

    // At any time.

    /// Returns the outcome of the session so far. When memory is exhausted the verdict is a failure of the class
    /// errors.
    [[nodiscard]] virtual KvNReflasher::KvTOutcome outcome() const = 0;

    // After run().

    /// Looks at what the target reports now, with a scan of its own. Nothing that it meets changes the outcome.
    [[nodiscard]] virtual KvNReflasher::KvTLook look() = 0;

    // At any time, also within a notification.

    /// Returns the outcome so far for the element of this index; that of an element that is not planned if there is no
    /// such element or memory is exhausted.
    [[nodiscard]] virtual KvNReflasher::KvTElementOutcome outcomeOf(std::uint32_t index) const = 0;

    // At any time, from any thread.

    /// Asks the update to end, from a signal handler, too. run() then ends in its own order: it awaits what has begun,
    /// deletes the transferred files, finishes the session, gives the lock back and prints the results. It asks before
    /// each phase, transfer, start and file; no phase is notified any more but 0xFFFFFFFF. A call that is under way
    /// returns when it returns. The verdict is of class stopped if anything that was planned has not begun or not
    /// ended. A request is never taken back; a stronger one replaces a weaker one.
    virtual void requestStop(KvNReflasher::KvEStop how) noexcept = 0;
    /// Returns what a running update waits for.
    [[nodiscard]] virtual KvNReflasher::KvTActivity activity() const = 0;

    // Before run().

    /// Gives up waiting, as KvEStop::giveUp does, when the started updates have shown nothing new for so many seconds;
    /// the verdict is then of class elements. A round of status queries counts 0.2 s, whatever it takes, and the time
    /// within its calls. 0 (the default): waits as long as it takes.
    virtual void setStallLimit(std::uint32_t seconds) = 0;

    // Between prepare() and run().

    /// Leaves out each element whose entry has a lower version than is installed, with the reason downgradeLeftOut.
    virtual void leaveOutDowngrades() = 0;

    // Before prepare().

    /// Lets prepare() keep the text of the archive description for findings().
    virtual void keepDescription() = 0;

    // After prepare().

    /// Returns what KvIArchive::findings() says of the archive, of the text of the description that prepare() has read;
    /// the archive's other files are looked at now. Findings do not change the outcome. If no text was kept, because
    /// keepDescription() was not called or the description was not read, the only finding is the error
    /// "description-unreadable". If memory is exhausted, it is the error "out-of-memory", and the outcome's verdict
    /// says so.
    [[nodiscard]] virtual std::vector<KvNReflasher::KvTFinding> findings() = 0;

    // Before prepare().

    /// Lets prepare() verify the archive as a release: its manifest is obeyed, signatures are verified, and with a
    /// trust folder only archives that somebody trusted has signed are accepted. Any other archive is refused before
    /// the target is looked for: prepare() returns 1, and each fault is printed. In mode 7 a sealed archive is copied
    /// to a private folder while it is verified, and read there. A package (the archive folder is a file) is copied in
    /// all modes, as far as it is read. Messages name the archive as it was given. The copy lasts until the next
    /// prepare().
    virtual void setRelease(const KvNReflasher::KvTReleaseOptions& options) = 0;

    // After prepare().

    /// Returns the release record of the archive that was accepted; nothing if none was, or without setRelease().
    [[nodiscard]] virtual std::optional<KvNReflasher::KvTRelease> release() const = 0;

    // Between prepare() and run().

    /// Lets run() notice update files that change: each file of the plan is hashed now, and directly before and after
    /// its transfer. The outcome states for each element whether its file has changed. Files of a sealed archive are
    /// not hashed again, since run() reads the private copy. If memory is exhausted, the outcome's verdict says so.
    virtual void watchFiles() = 0;

    // Before prepare().

    /// Lets run() and reboot() write down what they do: in a file of its own in the folder of the options, which is
    /// held until closeJournal() or the end of the session. The class of the verdict is output if it cannot be created,
    /// and locked if another run does the same: runs the same saved plan, or goes on with the same run.
    virtual KvNReflasher::KvTVerdict openJournal(const KvNReflasher::KvTJournalOptions& options) = 0;

    // Between prepare() and run().

    /// Decides which files that the inventory does not list are written. `journal` states folder and places.
    virtual void decideUnlistedFiles(KvNReflasher::KvEUnlistedFiles which,
                                     const KvNReflasher::KvTJournalOptions& journal) = 0;
    /// Returns the plan as it stands, to be kept. Nothing, with a `reason`, if a file to be used cannot be read, or if
    /// there is no plan.
    [[nodiscard]] virtual std::optional<KvNReflasher::KvTSavedPlan> planToSave(std::string& reason) = 0;
    /// Makes run() do exactly what a saved plan says: applies the options that leave elements out, compares target and
    /// archive with the plan, and watches the files, see watchFiles(). Returns all differences, a sentence each; if
    /// there is none and the journal has a run of the plan that has succeeded, that. If there is any, the outcome's
    /// verdict is of class stale, and run() must not be called.
    [[nodiscard]] virtual std::vector<std::string> holdTo(const KvNReflasher::KvTSavedPlan& plan,
                                                          const KvNReflasher::KvTJournalOptions& journal) = 0;
    /// Makes run() go on with an earlier run, for whose plan the session was created: leaves out what is done and,
    /// unless `redo` is set, what is in doubt. If there are differences, the outcome's verdict is of class stale, and
    /// run() must not be called.
    [[nodiscard]] virtual KvNReflasher::KvTResumption resume(const KvNReflasher::KvTRunRecord& run, bool redo) = 0;

    // After run().

    /// Writes a verification, and the verdict on it, into the journal.
    virtual void journalVerification(const KvNReflasher::KvTVerification& verification,
                                     const KvNReflasher::KvTVerdict& verdict) = 0;
    /// Writes the end of the run into the journal and gives its file back. The class of the result is output if the
    /// journal could not be written from some moment on, and says why.
    virtual KvNReflasher::KvTVerdict closeJournal(const KvNReflasher::KvTVerdict& verdict, std::int32_t exitCode) = 0;
    /// Id of the run in the journal; empty without a journal, or if nothing was written.
    [[nodiscard]] virtual std::string runId() const = 0;
};

namespace KvNReflasher {

/// Holds what the target reports now against the elements that a session has updated. `wasRebooted`: what is the same
/// as before the update will not change any more. Throws std::bad_alloc when memory is exhausted, as the following.
[[nodiscard]] KV_REFLASH_API KvTVerification verifyUpdate(const KvTPlan& plan, const KvTOutcome& outcome, KvTLook look,
                                                          bool wasRebooted);
/// Holds what the scan of the plan has found against the archive, without an update.
[[nodiscard]] KV_REFLASH_API KvTVerification verifyPlan(const KvTPlan& plan);
/// Returns the one of `names` that `name` was most likely meant to be; an empty text if none is near.
[[nodiscard]] KV_REFLASH_API std::string nearestName(const std::string& name, const std::vector<std::string>& names);
/// Class unsupported if the archive does not support the target.
[[nodiscard]] KV_REFLASH_API KvTVerdict verdictOf(const KvTPlan& plan);
/// Returns the verdict on a verification: class verification if an element differs, is unchanged or gone, or if
/// elements of the inventory were looked for and none could be judged, or if the look failed; class errors if the look
/// has collected errors.
[[nodiscard]] KV_REFLASH_API KvTVerdict verdictOf(const KvTVerification& verification);

} // namespace KvNReflasher
