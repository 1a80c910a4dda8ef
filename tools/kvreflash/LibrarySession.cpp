#include "LibrarySession.h"

#include "EventLog.h"
#include "ForeignPaths.h"
#include "KvCPreparation.h"
#include "KvIReflasher.h"
#include "MessageText.h"
#include "PlainProgress.h"
#include "QueryDocument.h"
#include "RunningUpdate.h"
#include "Terminal.h"
#include "TextConversion.h"
#include "ToolOutput.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

/// Where the notification functions, which are given no context, find the session's outputs. One session runs at a
/// time.
struct Outputs {
    EventLog events;
    std::FILE* messages = stdout;
    /// Everything that was said.
    std::string log;
    bool plainProgress = false;
    PlainProgress progress;
    /// While an update runs.
    std::optional<RunningUpdate> update;
    std::set<std::uint32_t> failedElements;
};

Outputs* currentOutputs = nullptr;

void onMessage(const std::wstring& message) {
    const std::string bytes = messageBytes(message);
    writeText(currentOutputs->messages, bytes);
    currentOutputs->log += bytes;
}

void onPhase(std::uint32_t phase) {
    currentOutputs->events.write("phase", phase);
    currentOutputs->progress.beginPhase(phase);
    if (currentOutputs->update) {
        currentOutputs->update->beginPhase(phase);
    }
}

void onProgress(std::uint32_t percentage) {
    currentOutputs->events.write("progress", percentage);
    if (currentOutputs->plainProgress) {
        writeText(stdout, currentOutputs->progress.lineFor(percentage));
    }
}

void onElementError(std::uint32_t index) {
    currentOutputs->events.write("elementError", index);
    if (currentOutputs->update) {
        currentOutputs->update->elementFailed(index);
    }
}

/// Makes `outputs` the ones that the notification functions write to.
class CurrentOutputs {
public:
    explicit CurrentOutputs(Outputs& outputs) { currentOutputs = &outputs; }
    CurrentOutputs(const CurrentOutputs&) = delete;
    CurrentOutputs& operator=(const CurrentOutputs&) = delete;
    ~CurrentOutputs() { currentOutputs = nullptr; }
};

/// An archive from who knows where shall not reach out of its folder or out of the target's unnoticed.
void warnOfForeignPaths(const KvNReflasher::KvTOptions& options) {
    for (const std::string& sentence : foreignPathsOfArchive(options)) {
        say("warning: " + sentence);
    }
}

/// The library writes to standard output itself unless that would lose text or the tool must see its messages.
void setCallbacks(KvIReflasher& session, const KvTCommandLine& line, Outputs& outputs) {
    outputs.messages = line.json ? stderr : stdout;
    outputs.plainProgress = line.progress == KvEProgress::plain;
    if (line.json || line.reportFile || isTerminal(stdout) || !writesAnyWideText()) {
        session.setMessageCallback(onMessage);
    }
    if (line.options.mode == KvNReflasher::performUpdate) {
        session.setPhaseCallback(onPhase);
        session.setProgressCallback(onProgress);
        session.setElementErrorCallback(onElementError);
    }
}

/// Runs a prepared session; an update so that interrupts concern it.
bool run(KvIReflasher& session, const KvTCommandLine& line, Outputs& outputs) {
    if (line.options.mode != KvNReflasher::performUpdate) {
        return session.run();
    }
    outputs.update.emplace(session);
    const bool success = session.run();
    outputs.failedElements = outputs.update->failedElements();
    outputs.update.reset();
    return success;
}

std::vector<KvNReflasher::KvTUpdateElementInfo> elementsOf(KvIReflasher& session) {
    KvNReflasher::KvTUpdateElementInfo* elements = nullptr;
    std::uint32_t count = 0;
    session.getUpdateElements(elements, count);
    const std::unique_ptr<KvNReflasher::KvTUpdateElementInfo[]> owned(elements);
    return {elements, elements + count};
}

/// An element that is not there cannot be left out: whoever names one has made a mistake, or another plan.
void disableElements(KvIReflasher& session, const std::vector<std::uint32_t>& elements) {
    if (elements.empty()) {
        return;
    }
    const std::size_t count = elementsOf(session).size();
    for (const std::uint32_t element : elements) {
        session.disableUpdateElement(element);
        if (element >= count) {
            say("--disable: the target has no element " + std::to_string(element));
        }
    }
}

bool hasFilter(const KvNReflasher::KvTOptions& options) {
    return options.configurationElements || !options.boardTypeFilter.empty() || !options.serialNumberFilter.empty() ||
           !options.elementNameFilter.empty();
}

/// A mistyped filter leaves a session without work, which then succeeds.
void sayWhenAllIsFiltered(KvIReflasher& session, const KvNReflasher::KvTOptions& options) {
    const bool hasElements = options.mode == KvNReflasher::showTargetElements ||
                             options.mode == KvNReflasher::showUpdatePlan ||
                             options.mode == KvNReflasher::performUpdate;
    if (hasElements && hasFilter(options) && elementsOf(session).empty()) {
        say("no element of the target passes the filters");
    }
}

/// The session does not say which elements have no entry.
void sayElementsWithoutEntry(KvIReflasher& session) {
    constexpr std::size_t mostNames = 3;
    std::string names;
    std::size_t count = 0;
    for (const KvNReflasher::KvTUpdateElementInfo& element : elementsOf(session)) {
        if (element.hasArchiveFile == 0 && !element.isFileSystemElement && ++count <= mostNames) {
            names.append(count == 1 ? "'" : ", '").append(wideToUtf8(element.displayName.c_str())).append("'");
        }
    }
    if (count > mostNames) {
        names.append(" and ").append(std::to_string(count - mostNames)).append(" more");
    }
    say("there is no entry for " + names);
}

/// True when the session has come as far as to look for the target.
bool hasReadItsArchive(KvIReflasher& session, const KvNReflasher::KvTOptions& options) {
    if (options.mode != KvNReflasher::showUpdatePlan && options.mode != KvNReflasher::performUpdate) {
        return true;
    }
    std::wstring name;
    std::wstring version;
    std::wstring product;
    std::wstring format;
    std::wstring variant;
    session.getArchiveInfo(name, version, product, format, variant);
    return format != L"0.0";
}

/// What the tool knows of a session that could not be prepared; the session itself has said why.
ExitCode afterFailedPrepare(KvIReflasher& session, const KvNReflasher::KvTOptions& options, std::uint32_t prepared) {
    if (prepared == prepareTargetNotSupported) {
        sayElementsWithoutEntry(session);
        return exitTargetNotSupported;
    }
    const bool needsTarget = options.mode >= KvNReflasher::showTargetElements;
    if (needsTarget && options.target.empty() && hasReadItsArchive(session, options)) {
        say("give the target with -t HOST");
    }
    return exitFailed;
}

/// Prepares, runs and, when asked for, reboots.
ExitCode performSession(KvIReflasher& session, const KvTCommandLine& line, Outputs& outputs) {
    if (const std::uint32_t prepared = session.prepare(); prepared != prepareReady) {
        return afterFailedPrepare(session, line.options, prepared);
    }
    disableElements(session, line.disabledElements);
    bool success = run(session, line, outputs);
    sayWhenAllIsFiltered(session, line.options);
    if (line.json) {
        writeText(stdout, queryDocument(session, line.options.mode));
    }
    if (success && line.reboot) {
        success = session.reboot();
    }
    return success ? exitSuccess : exitFailed;
}

} // namespace

KvTSessionOutcome runLibrarySession(const KvTCommandLine& line) {
    KvTSessionOutcome outcome;
    Outputs outputs;
    const CurrentOutputs current(outputs);
    if (line.eventsFile && !outputs.events.open(*line.eventsFile)) {
        sayFileFailure("cannot create", *line.eventsFile);
        return outcome;
    }
    const std::unique_ptr<KvIReflasher> session(KvIReflasher::createInstance(line.options));
    if (session == nullptr) {
        say("out of memory");
        return outcome;
    }
    setCallbacks(*session, line, outputs);
    if (line.options.mode == KvNReflasher::performUpdate) {
        warnOfForeignPaths(line.options);
    }
    outcome.result = performSession(*session, line, outputs);
    outcome.failedElements = std::move(outputs.failedElements);
    outcome.messages = std::move(outputs.log);
    if (!outputs.events.close()) {
        say("cannot write '" + line.eventsFile.value_or("") + "'");
        outcome.result = outcome.result == exitSuccess ? exitFailed : outcome.result;
    }
    return outcome;
}
