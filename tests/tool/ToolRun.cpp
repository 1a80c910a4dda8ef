#include "ToolRun.h"

#include "CommandLine.h"
#include "KvEmulation.h"
#include "RedirectedStream.h"

#include <gtest/gtest.h>

#include <utility>
#include <variant>

ToolRun runCaptured(const std::vector<std::string>& arguments) {
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
