#include "LibrarySession.h"

#include "EventLog.h"
#include "ForeignPathText.h"
#include "ForeignPaths.h"
#include "KvCPreparation.h"
#include "KvIReflasher.h"
#include "MessageCapture.h"
#include "MessageText.h"
#include "PlainProgress.h"
#include "QueryDocument.h"
#include "RunningUpdate.h"
#include "SessionRemarks.h"
#include "Terminal.h"
#include "ToolOutput.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

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
    const MessageCapture silent;
    KvCFirmwareArchive archive(silent.writer(), options);
    // The session itself will say why an archive cannot be read.
    if (!archive.readDescriptionFile(KvCErrorManager::getInstance()->getMasterErrorList())) {
        return;
    }
    for (const KvNReflasher::KvTForeignPath& path : foreignPathsOf(archive, options.archiveFolder)) {
        say("warning: " + foreignPathText(path));
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

/// Prepares, runs and, when asked for, reboots.
ExitCode performSession(KvIReflasher& session, const KvTCommandLine& line, Outputs& outputs) {
    if (const std::uint32_t prepared = session.prepare(); prepared != prepareReady) {
        sayWhatIsMissing(session, line.options, prepared);
        return prepared == prepareTargetNotSupported ? exitTargetNotSupported : exitFailed;
    }
    sayWhichElementsAreNotThere(session, line.disabledElements);
    for (const std::uint32_t element : line.disabledElements) {
        session.disableUpdateElement(element);
    }
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
