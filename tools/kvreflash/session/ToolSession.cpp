#include "ToolSession.h"

#include "EmulatedTargets.h"
#include "ExitCodes.h"
#include "PathTexts.h"
#include "ReleaseText.h"
#include "Selection.h"
#include "Streams.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <new>
#include <utility>

using namespace KvNReflasher;

namespace {

/// The folders of emulated targets say which target it is.
SessionRequest withPlaces(SessionRequest request) {
    if (request.journal) {
        request.journal->places.clear();
        for (const std::string& folder : request.emulatedTargets) {
            request.journal->places.push_back(absolutePath(folder));
        }
    }
    return request;
}

} // namespace

ToolSession::ToolSession(SessionRequest request)
    : request_(withPlaces(std::move(request))), session_(KvISession::createInstance(request_.options)),
      shown_(request_.textStream) {
    if (session_ == nullptr) {
        throw std::bad_alloc();
    }
    if (request_.textStream != stdout || request_.keepsMessages || request_.isQuiet || isTerminal(stdout) ||
        !writesAnyWideText()) {
        session_->setMessageFunction(takeMessage, this);
    }
    if (request_.release) {
        session_->setRelease(*request_.release);
    }
    if (request_.options.mode == performUpdate) {
        session_->setEventFunction(takeEvent, this);
        session_->setStallLimit(request_.stallLimit);
        update_.emplace([this](KvEStop how) { session_->requestStop(how); });
    }
}

KvTVerdict ToolSession::openEvents() {
    if (!request_.eventsFile || events_.open(*request_.eventsFile)) {
        events_.writeRunBegin({.command = "update",
                               .toolVersion = KvISession::version(),
                               .begin = {},
                               .end = {},
                               .target = utf8Of(request_.options.target),
                               .archiveFolder = utf8Of(request_.options.archiveFolder),
                               .exitCode = 0,
                               .messages = {}});
        return {};
    }
    return {KvEFailure::output, fileFailure("cannot create", *request_.eventsFile)};
}

KvTVerdict ToolSession::endEvents(const KvTVerdict& verdict) {
    events_.writeRunEnd(verdict, exitCodeOf(verdict.failure));
    if (events_.close()) {
        return {};
    }
    return {KvEFailure::output, "cannot write " + quotedPath(request_.eventsFile.value_or(""))};
}

KvTVerdict ToolSession::openJournal(const std::string& command, const std::string& planId, const std::string& resumes) {
    if (!request_.journal) {
        return {};
    }
    KvTJournalOptions options = *request_.journal;
    options.command = command;
    options.planId = planId;
    options.resumes = resumes;
    const KvTVerdict verdict = session_->openJournal(options);
    keepsJournal_ = verdict.isSuccess();
    return asFarAsRequired(verdict);
}

KvTVerdict ToolSession::closeJournal(const KvTVerdict& verdict) {
    return asFarAsRequired(session_->closeJournal(verdict, exitCodeOf(verdict.failure)));
}

/// A journal that nobody has asked for keeps nothing from being done.
KvTVerdict ToolSession::asFarAsRequired(KvTVerdict verdict) {
    if (verdict.failure != KvEFailure::output || !request_.journal || request_.journal->isRequired) {
        return verdict;
    }
    remark("warning: " + verdict.message);
    return {};
}

void ToolSession::keepMessages() {
    shown_ = nullptr;
    session_->setMessageFunction(takeMessage, this);
}

void ToolSession::remark(const std::string& sentence) {
    say(sentence);
    remarks_.append(visibleInLine(sentence)).append("\n");
}

bool ToolSession::prepare() {
    if (std::string fault = serveEmulatedTargets(request_.emulatedTargets); !fault.empty()) {
        served_ = {KvEFailure::target, std::move(fault)};
        return false;
    }
    const bool isPrepared = session_->prepare() == 0;
    if (update_ && session_->plan() != nullptr) {
        update_->setPlan(*session_->plan());
        if (!isPrepared) {
            events_.writePlan(*session_->plan()); // nothing is left out of it any more
        }
    }
    return isPrepared;
}

void ToolSession::remarkOnRelease() {
    const std::optional<KvTRelease> release = session_->release();
    if (const std::string text = release ? releaseText(*release) : std::string(); !text.empty()) {
        remark("the archive is " + text);
    }
}

bool ToolSession::run() {
    hasRun_ = true;
    quiet_.beginRun(update_.has_value());
    if (!update_) {
        return session_->run();
    }
    const CallWatch watch(*session_);
    return session_->run();
}

KvTVerdict ToolSession::select() {
    if (session_->plan() == nullptr) {
        return {};
    }
    KvTVerdict verdict = disableElements(*session_, request_.disabledElements);
    verdict.add(verdictOfFilters(*session_->plan(), request_.options, session_->hiddenElements()));
    if (request_.leavesOutDowngrades) {
        session_->leaveOutDowngrades();
    }
    session_->decideUnlistedFiles(request_.unlistedFiles, journal());
    showSelection();
    return verdict;
}

void ToolSession::showSelection() {
    for (const KvTPlannedElement& element : session_->plan()->elements) {
        if (element.isDowngrade && element.decision.update) {
            remark("warning: '" + element.displayName + "' is downgraded from " + element.installed.version->text +
                   " to " + element.entry->version->text);
        }
    }
    events_.writePlan(*session_->plan());
}

KvTVerdict ToolSession::prepareAndRun() {
    KvTVerdict result;
    const bool isPrepared = prepare();
    remarkOnRelease();
    if (isPrepared) {
        result = select();
        run();
    }
    result.add(verdict());
    return result;
}

KvTVerdict ToolSession::verdict() const {
    KvTVerdict verdict = served_;
    verdict.add(session_->outcome().verdict);
    if (verdict.failure == KvEFailure::archive) {
        verdict.message = withPastablePath(std::move(verdict.message), utf8Of(request_.options.archiveFolder),
                                           utf8Of(request_.options.descriptionFileName));
    }
    if (!served_.isSuccess() || verdict.failure != KvEFailure::target) {
        return verdict;
    }
    if (request_.options.target.empty()) {
        verdict.message = "give the target with -t HOST";
    } else if (canOnlyEmulate() && request_.emulatedTargets.empty()) {
        verdict.message = "this build reaches emulated targets only: give --emulate DIR";
    }
    return verdict;
}

KvTArchiveContent ToolSession::archiveContent() const {
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session_->getArchiveInfo(name, version, product, format, variant);
    KvTArchiveContent content;
    content.identity = {.archiveName = utf8Of(name),
                        .archiveVersion = utf8Of(version),
                        .productName = utf8Of(product),
                        .formatVersion = utf8Of(format),
                        .archiveVariant = utf8Of(variant)};
    content.entries = session_->archiveEntries();
    content.verdict = verdict();
    content.release = session_->release();
    return content;
}

void ToolSession::takeMessage(const std::string& message, void* context) {
    auto& session = *static_cast<ToolSession*>(context);
    if (session.shown_ != nullptr && (!session.request_.isQuiet || session.quiet_.shows(message))) {
        writeText(session.shown_, message);
    }
    session.messages_ += message;
}

void ToolSession::takeEvent(const KvTEvent& event, void* context) {
    static_cast<ToolSession*>(context)->onEvent(event);
}

/// Names the elements that the target is still asked for.
void ToolSession::sayStall(std::uint32_t seconds) {
    constexpr std::uint32_t succeeded = 2;
    const std::vector<KvTElementOutcome> outcomes = session_->outcome().elements;
    std::string names;
    for (std::size_t index = 0; index < outcomes.size(); ++index) {
        if (outcomes[index].result == KvEResult::inProgress && outcomes[index].state != succeeded) {
            names.append(names.empty() ? " '" : ", '")
                .append(session_->plan()->elements[index].displayName)
                .append("'");
        }
    }
    say("nothing has changed for " + std::to_string(seconds) + " s; waiting for" + names);
}

void ToolSession::onEvent(const KvTEvent& event) {
    update_->onEvent(event);
    events_.write(event, *session_);
    switch (event.event) {
    case KvEEvent::phase:
        progress_.beginPhase(event.value);
        break;
    case KvEEvent::progress:
        if (request_.showsPlainProgress) {
            writeText(shown_, progress_.lineFor(event.value));
        }
        break;
    case KvEEvent::stalled:
        sayStall(event.value);
        break;
    case KvEEvent::elementError:
    case KvEEvent::locked:
    case KvEEvent::unlocked:
    case KvEEvent::transfer:
    case KvEEvent::elementStart:
    case KvEEvent::elementEnd:
        break;
    }
}
