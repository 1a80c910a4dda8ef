#include "ToolSession.h"

#include "EmulatedTargets.h"
#include "PathTexts.h"
#include "Selection.h"
#include "Streams.h"
#include "Texts.h"
#include "ToolOutput.h"
#include "UserFiles.h"

#include <new>
#include <utility>

using namespace KvNReflasher;

ToolSession::ToolSession(SessionRequest request)
    : request_(std::move(request)), session_(KvISession::createInstance(request_.options)),
      shown_(request_.textStream) {
    if (session_ == nullptr) {
        throw std::bad_alloc();
    }
    if (request_.textStream != stdout || request_.keepsMessages || isTerminal(stdout) || !writesAnyWideText()) {
        session_->setMessageFunction(takeMessage, this);
    }
    if (request_.options.mode == performUpdate) {
        session_->setEventFunction(takeEvent, this);
    }
}

KvTVerdict ToolSession::openEvents() {
    if (!request_.eventsFile || events_.open(*request_.eventsFile)) {
        return {};
    }
    return {KvEFailure::output, fileFailure("cannot create", *request_.eventsFile)};
}

KvTVerdict ToolSession::closeEvents() {
    if (events_.close()) {
        return {};
    }
    return {KvEFailure::output, "cannot write " + quotedPath(request_.eventsFile.value_or(""))};
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
    return session_->prepare() == 0;
}

bool ToolSession::runInterruptibly() {
    hasRun_ = true;
    if (request_.options.mode != performUpdate) {
        return session_->run();
    }
    update_.emplace(*session_->plan());
    const bool succeeded = session_->run();
    update_.reset();
    return succeeded;
}

KvTVerdict ToolSession::prepareAndRun() {
    KvTVerdict result;
    if (prepare()) {
        if (session_->plan() != nullptr) {
            result = verdictOfFilters(*session_->plan(), request_.options);
        }
        runInterruptibly();
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
    if (served_.isSuccess() && verdict.failure == KvEFailure::target && request_.options.target.empty()) {
        verdict.message = "give the target with -t HOST";
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
    return content;
}

void ToolSession::takeMessage(const std::string& message, void* context) {
    auto& session = *static_cast<ToolSession*>(context);
    if (session.shown_ != nullptr) {
        writeText(session.shown_, message);
    }
    session.messages_ += message;
}

void ToolSession::takeEvent(const KvTEvent& event, void* context) {
    static_cast<ToolSession*>(context)->onEvent(event);
}

void ToolSession::onEvent(const KvTEvent& event) {
    switch (event.event) {
    case KvEEvent::phase:
        events_.write("phase", event.value);
        progress_.beginPhase(event.value);
        if (update_) {
            update_->beginPhase(event.value);
        }
        break;
    case KvEEvent::progress:
        events_.write("progress", event.value);
        if (request_.showsPlainProgress) {
            writeText(shown_, progress_.lineFor(event.value));
        }
        break;
    case KvEEvent::elementError:
        events_.write("elementError", event.value);
        if (update_) {
            update_->elementFailed(event.value);
        }
        break;
    case KvEEvent::locked:
    case KvEEvent::unlocked:
    case KvEEvent::transfer:
    case KvEEvent::elementStart:
    case KvEEvent::elementEnd:
        break;
    }
}
