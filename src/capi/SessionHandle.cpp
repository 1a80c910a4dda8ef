#include "SessionHandle.h"

#include "ExhaustedMemory.h"
#include "Records.h"
#include "TextConversion.h"
#include "Timestamp.h"

#include <chrono>
#include <new>
#include <utility>

using namespace KvNReflasher;

namespace {

bool has(std::uint32_t flags, std::uint32_t flag) {
    return (flags & flag) != 0;
}

KvTOptions optionsOf(const kvr_session_options& given) {
    KvTOptions options{};
    options.mode = given.mode;
    options.target = pathOf(given.target);
    options.boardTypeFilter = textOf(given.board_types);
    options.serialNumberFilter = textOf(given.serial_numbers);
    options.elementNameFilter = textOf(given.element_names);
    options.forceUpdate = has(given.flags, KVR_FORCE);
    options.configurationElements = has(given.flags, KVR_CONFIGURATION);
    options.disableCustomElements = has(given.flags, KVR_SKIP_CUSTOM);
    options.archiveFolder = pathOf(given.archive);
    options.descriptionFileName = pathOf(given.description);
    if (options.descriptionFileName.empty()) {
        options.descriptionFileName = L"archive.json";
    }
    return options;
}

std::string timeOfNow() {
    return textOfMoment(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

bool isMode(std::uint32_t mode) {
    return mode >= KVR_MODE_ELEMENTS && mode <= KVR_MODE_UPDATE;
}

} // namespace

KvCSessionHandle::KvCSessionHandle(const kvr_session_options& options) : flags_(options.flags), begin_(timeOfNow()) {
    if (!isMode(options.mode) || options.unlisted_files > KVR_UNLISTED_NEVER) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "an option has a value that is not known");
    }
    unlistedFiles_ = static_cast<KvEUnlistedFiles>(options.unlisted_files);
    if (!textOf(options.journal_folder).empty()) {
        journal_.emplace();
        journal_->folder = pathOf(options.journal_folder);
        journal_->isRequired = has(flags_, KVR_JOURNAL_REQUIRED);
        journal_->command = options.mode == KVR_MODE_UPDATE ? "update" : "reboot";
        if (std::string place = textOf(options.journal_place); !place.empty()) {
            journal_->places.push_back(std::move(place));
        }
    }
    decide(options);
    options_.noProgress = true;
    options_.verbose = has(flags_, KVR_VERBOSE);
    session_.reset(KvISession::createInstance(options_));
    if (session_ == nullptr) {
        throw std::bad_alloc();
    }
    session_->setStallLimit(options.stall_limit);
    if (has(flags_, KVR_RELEASE) || !textOf(options.trust_folder).empty()) {
        session_->setRelease({pathOf(options.trust_folder), has(flags_, KVR_ACCEPT_UNSEALED)});
    }
}

KvCSessionHandle::~KvCSessionHandle() {
    try {
        const KvTVerdict verdict = this->verdict();
        static_cast<void>(session_->closeJournal(verdict, exitCodeOf(verdict.failure)));
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): the run is taken for one that broke off
    }
}

/// Takes target, archive and what decides from the client, from a saved plan or from an earlier run.
void KvCSessionHandle::decide(const kvr_session_options& options) {
    const std::string plan = textOf(options.saved_plan);
    const std::string run = textOf(options.resumed_run);
    if (plan.empty() && run.empty()) {
        options_ = optionsOf(options);
        return;
    }
    if (options.mode != KVR_MODE_UPDATE || (!plan.empty() && !run.empty()) || (!run.empty() && !journal_)) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT,
                             "an update runs a saved plan, or goes on with a run of its journal folder");
    }
    std::string reason;
    if (run.empty()) {
        savedPlan_ = readSavedPlan(plan, reason);
    } else {
        resumed_ = readRun(journal_->folder, run, reason);
    }
    if (!savedPlan_ && !resumed_) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, reason);
    }
    options_ = optionsFor(savedPlan_ ? *savedPlan_ : resumed_->plan, pathOf(options.archive));
    options_.mode = options.mode;
    if (journal_) {
        journal_->planId = savedPlan_ ? savedPlan_->id : resumed_->run.planId;
        journal_->resumes = resumed_ ? resumed_->run.id : std::string();
    }
}

void KvCSessionHandle::require(bool isInOrder) const {
    if (!isInOrder) {
        throw KvCCallFailure(KVR_ERROR_ORDER, "the function must not be called now");
    }
}

void KvCSessionHandle::setEventFunction(kvr_event_function function, void* context) {
    require(step_ == Step::created);
    function_ = function;
    context_ = context;
}

void KvCSessionHandle::notify(const kvr_event& event) const {
    if (function_ != nullptr) {
        function_(&event, context_);
    }
}

KvTVerdict KvCSessionHandle::openJournal() {
    if (!journal_) {
        return {};
    }
    const KvTVerdict verdict = session_->openJournal(*journal_);
    return verdict.failure == KvEFailure::output && !journal_->isRequired ? KvTVerdict() : verdict;
}

std::int32_t KvCSessionHandle::prepare() {
    require(step_ == Step::created);
    step_ = Step::preparing;
    session_->setMessageFunction(
        [](const std::string& text, void* context) {
            auto& self = *static_cast<KvCSessionHandle*>(context);
            attempt([&] { self.messages_ += text; }); // documents show less then
            self.notify({sizeof(kvr_event), KVR_EVENT_MESSAGE, 0, 1, text.c_str()});
        },
        this);
    session_->setEventFunction(
        [](const KvTEvent& event, void* context) {
            static_cast<KvCSessionHandle*>(context)->notify({sizeof(kvr_event), static_cast<std::uint32_t>(event.event),
                                                             event.value, event.succeeded ? 1U : 0U, ""});
        },
        this);
    ownVerdict_ = openJournal();
    if (!ownVerdict_.isSuccess()) {
        step_ = Step::refused;
        return KVR_FAILED;
    }
    const auto result = static_cast<std::int32_t>(session_->prepare());
    const bool isReady = result == KVR_SUCCESS && select();
    step_ = isReady ? Step::prepared : Step::refused;
    return result == KVR_SUCCESS && !isReady ? KVR_FAILED : result;
}

/// Leaves out what is not to be updated. False if the session does not hold to its plan or run.
bool KvCSessionHandle::select() {
    const KvTJournalOptions journal = journal_.value_or(KvTJournalOptions());
    if (savedPlan_) {
        faults_ = session_->holdTo(*savedPlan_, journal);
    } else if (resumed_) {
        faults_ = session_->resume(*resumed_, has(flags_, KVR_REDO)).differences;
    } else {
        if (has(flags_, KVR_NO_DOWNGRADE)) {
            session_->leaveOutDowngrades();
        }
        session_->decideUnlistedFiles(unlistedFiles_, journal);
        if (has(flags_, KVR_WATCH_FILES)) {
            session_->watchFiles();
        }
    }
    if (hasFilters() && session_->plan()->elements.empty()) {
        ownVerdict_.add({KvEFailure::selection, "no element of the target passes the filters"});
    }
    return faults_.empty() && ownVerdict_.isSuccess();
}

bool KvCSessionHandle::hasFilters() const {
    return !options_.boardTypeFilter.empty() || !options_.serialNumberFilter.empty() ||
           !options_.elementNameFilter.empty();
}

std::int32_t KvCSessionHandle::disable(const std::string& element, std::uint32_t& found) {
    require(step_ == Step::prepared && !savedPlan_);
    const KvTDisabling disabling = session_->disableElement(element);
    found = static_cast<std::uint32_t>(disabling.elements.size());
    return disabling.isDone() ? KVR_SUCCESS : KVR_FAILED;
}

std::int32_t KvCSessionHandle::preflight() {
    require(step_ == Step::prepared);
    faults_ = session_->preflight();
    if (!faults_.empty()) {
        step_ = Step::refused;
    }
    return faults_.empty() ? KVR_SUCCESS : KVR_FAILED;
}

std::int32_t KvCSessionHandle::run() {
    require(step_ == Step::prepared);
    step_ = Step::ran;
    return session_->run() ? KVR_SUCCESS : KVR_FAILED;
}

void KvCSessionHandle::requestStop(std::uint32_t how) {
    if (how > KVR_STOP_GIVE_UP) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "the request is not known");
    }
    session_->requestStop(how == KVR_STOP_GIVE_UP ? KvEStop::giveUp : KvEStop::finishBegun);
}

std::int32_t KvCSessionHandle::verify(bool wasRebooted) {
    const bool isUpdate = options_.mode == performUpdate;
    require(isUpdate ? step_ == Step::ran : step_ == Step::prepared || step_ == Step::ran);
    verification_ =
        isUpdate ? verifyUpdate(plan(), session_->outcome(), session_->look(), wasRebooted) : verifyPlan(plan());
    const KvTVerdict verdict = verdictOf(*verification_);
    session_->journalVerification(*verification_, verdict);
    return verdict.isSuccess() ? KVR_SUCCESS : KVR_FAILED;
}

std::int32_t KvCSessionHandle::reboot() {
    require(step_ == Step::prepared || step_ == Step::ran);
    return session_->reboot() ? KVR_SUCCESS : KVR_FAILED;
}

const KvTPlan& KvCSessionHandle::plan() const {
    require(session_->plan() != nullptr);
    return *session_->plan();
}

const KvTVerification& KvCSessionHandle::verification() const {
    require(verification_.has_value());
    return *verification_;
}

KvTVerdict KvCSessionHandle::verdict() const {
    KvTVerdict verdict = ownVerdict_;
    verdict.add(session_->outcome().verdict);
    if (verification_) {
        verdict.add(verdictOf(*verification_));
    }
    return verdict;
}

std::string KvCSessionHandle::report(const char* command) {
    const KvTOutcome now = session_->outcome();
    const std::vector<KvTArchiveEntry> accepted = session_->archiveEntries();
    const KvTSessionRecord record{.verdict = verdict(),
                                  .plan = session_->plan(),
                                  .outcome = &now,
                                  .verification = verification_ ? &*verification_ : nullptr,
                                  .entries = &accepted};
    return reportDocument(record, {.command = command,
                                   .toolVersion = KvISession::version(),
                                   .begin = begin_,
                                   .end = timeOfNow(),
                                   .target = wideToUtf8(options_.target.c_str()),
                                   .archiveFolder = wideToUtf8(options_.archiveFolder.c_str()),
                                   .exitCode = exitCodeOf(record.verdict.failure),
                                   .messages = messages_});
}

std::string KvCSessionHandle::explanations() {
    std::vector<KvTExplanation> explanations;
    for (std::uint32_t index = 0; session_->plan() != nullptr && index < session_->plan()->elements.size(); ++index) {
        explanations.push_back(session_->explain(index));
    }
    return explainDocument(session_->plan(), explanations, session_->hiddenElements(), verdict());
}

std::optional<std::string> KvCSessionHandle::document(std::uint32_t kind, std::string& reason) {
    switch (kind) {
    case KVR_DOCUMENT_PLAN:
        return report("plan");
    case KVR_DOCUMENT_UPDATE:
        return report("update");
    case KVR_DOCUMENT_VERIFY:
        return report("verify");
    case KVR_DOCUMENT_REBOOT:
        return report("reboot");
    case KVR_DOCUMENT_ELEMENTS:
        return elementsDocument(session_->plan(), verdict());
    case KVR_DOCUMENT_EXPLAIN:
        return explanations();
    case KVR_DOCUMENT_SAVED_PLAN: {
        require(step_ == Step::prepared && session_->plan() != nullptr);
        const std::optional<KvTSavedPlan> saved = session_->planToSave(reason);
        if (!saved && reason.empty()) {
            throw std::bad_alloc();
        }
        return saved ? std::optional(savedPlanDocument(*saved)) : std::nullopt;
    }
    default:
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "there is no such document");
    }
}
