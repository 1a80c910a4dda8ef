#include "Session.h"

#include "ArchiveCheck.h"
#include "EmulatedTargets.h"
#include "EventLog.h"
#include "ForeignPaths.h"
#include "KvIReflasher.h"
#include "MessageText.h"
#include "PlanExplanation.h"
#include "PlanMatrix.h"
#include "QueryDocument.h"
#include "TargetCapture.h"
#include "Terminal.h"
#include "ToolOutput.h"

#include <cstdio>
#include <memory>

namespace {

/// Where the notification functions, which are given no context, find the session's outputs. One session runs at a
/// time.
struct Outputs {
    EventLog events;
    std::FILE* messages = stdout;
};

Outputs* currentOutputs = nullptr;

void onMessage(const std::wstring& message) {
    writeText(currentOutputs->messages, messageBytes(message));
}

void onPhase(std::uint32_t phase) {
    currentOutputs->events.write("phase", phase);
}

void onProgress(std::uint32_t percentage) {
    currentOutputs->events.write("progress", percentage);
}

void onElementError(std::uint32_t index) {
    currentOutputs->events.write("elementError", index);
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
    if (line.json || isTerminal(stdout) || !writesAnyWideText()) {
        session.setMessageCallback(onMessage);
    }
    if (line.eventsFile) {
        session.setPhaseCallback(onPhase);
        session.setProgressCallback(onProgress);
        session.setElementErrorCallback(onElementError);
    }
}

/// Results of KvIReflasher::prepare().
constexpr std::uint32_t prepareReady = 0;
constexpr std::uint32_t prepareTargetNotSupported = 2;

/// Prepares, runs and, when asked for, reboots.
ExitCode performSession(KvIReflasher& session, const KvTCommandLine& line) {
    if (const std::uint32_t prepared = session.prepare(); prepared != prepareReady) {
        return prepared == prepareTargetNotSupported ? exitTargetNotSupported : exitFailed;
    }
    for (const std::uint32_t element : line.disabledElements) {
        session.disableUpdateElement(element);
    }
    bool success = session.run();
    if (line.json) {
        writeText(stdout, queryDocument(session, line.options.mode));
    }
    if (success && line.reboot) {
        success = session.reboot();
    }
    return success ? exitSuccess : exitFailed;
}

ExitCode runSession(const KvTCommandLine& line) {
    Outputs outputs;
    const CurrentOutputs current(outputs);
    if (line.eventsFile && !outputs.events.open(*line.eventsFile)) {
        say("cannot create '" + *line.eventsFile + "'");
        return exitFailed;
    }
    const std::unique_ptr<KvIReflasher> session(KvIReflasher::createInstance(line.options));
    if (session == nullptr) {
        say("out of memory");
        return exitFailed;
    }
    setCallbacks(*session, line, outputs);
    if (line.options.mode == KvNReflasher::performUpdate) {
        warnOfForeignPaths(line.options);
    }
    ExitCode result = performSession(*session, line);
    if (!outputs.events.close()) {
        say("cannot write '" + line.eventsFile.value_or("") + "'");
        result = result == exitSuccess ? exitFailed : result;
    }
    return result;
}

ExitCode runTask(const KvTCommandLine& line) {
    // Each session of a matrix serves its own.
    if (line.task != KvETask::matrix && !serveEmulatedTargets(line.emulatedTargets)) {
        return exitFailed;
    }
    switch (line.task) {
    case KvETask::session:
        return runSession(line);
    case KvETask::check:
        return checkArchive(line);
    case KvETask::capture:
        return captureTarget(line);
    case KvETask::explain:
        return explainPlan(line);
    case KvETask::matrix:
        return showMatrix(line);
    }
    return exitFailed;
}

} // namespace

ExitCode runTool(const std::vector<std::string>& arguments) {
    const auto line = readCommandLine(arguments);
    const auto* const answered = std::get_if<ExitCode>(&line);
    const ExitCode result = answered != nullptr ? *answered : runTask(std::get<KvTCommandLine>(line));
    // Whoever wrote to standard output, the library or the tool: what was lost shows here.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        say("cannot write to standard output");
        return result == exitSuccess ? exitFailed : result;
    }
    return result;
}
