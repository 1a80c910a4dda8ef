#include "ToolRun.h"

#include "KvEmulation.h"
#include "RedirectedStream.h"
#include "Tool.h"

#include <gtest/gtest.h>

#include <variant>

ToolRun runCaptured(const std::vector<std::string>& arguments) {
    KvEmulation::reset();
    const RedirectedStream output(stdout);
    const RedirectedStream errors(stderr);
    ToolRun run;
    run.exitCode = runTool(arguments);
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
    const auto read = readCommandLine(arguments);
    if (const auto* line = std::get_if<KvTCommandLine>(&read)) {
        result.line = *line;
    } else {
        result.answer.exitCode = std::get<ExitCode>(read);
    }
    result.answer.output = output.received();
    result.answer.errors = errors.received();
    return result;
}
