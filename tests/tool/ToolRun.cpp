#include "ToolRun.h"

#include "CommandLine.h"
#include "EnvironmentVariable.h"
#include "KvEmulation.h"
#include "RedirectedStream.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <utility>
#include <variant>

namespace {

/// No test writes into the journal of who runs it.
void keepJournalAside() {
    static const ScratchFolder place;
    static const EnvironmentVariable state("XDG_STATE_HOME", place.text());
}

} // namespace

ToolRun runCaptured(const std::vector<std::string>& arguments) {
    keepJournalAside();
    KvEmulation::reset();
    const RedirectedStream output(stdout);
    const RedirectedStream errors(stderr);
    ToolRun run;
    run.exitCode = executeCommandLine(arguments);
    run.output = output.received();
    run.errors = errors.received();
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    KvEmulation::reset();
    return run;
}

ReadArguments readCaptured(const std::vector<std::string>& arguments) {
    const RedirectedStream output(stdout);
    const RedirectedStream errors(stderr);
    ReadArguments result;
    auto read = readCommandLine(arguments);
    if (auto* const command = std::get_if<std::unique_ptr<Command>>(&read)) {
        result.command = std::move(*command);
    } else {
        result.answer.exitCode = std::get<ExitCode>(read);
    }
    result.answer.output = output.received();
    result.answer.errors = errors.received();
    return result;
}
