// Messages: the wide formatter and the console writer, at a number of messages and at one long text.

#include "BenchData.h"
#include "KvCConsoleWriter.h"
#include "WideFormat.h"

#include <benchmark/benchmark.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

int countMessage(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = countFormatted(format, arguments);
    va_end(arguments);
    return length;
}

int writeMessage(std::FILE* stream, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = writeFormatted(stream, format, arguments);
    va_end(arguments);
    return length;
}

void expectSome(int length) {
    if (length <= 0) {
        giveUp("a message was not formatted");
    }
}

void formatterCount(benchmark::State& state) {
    for (auto iteration : state) {
        for (std::int64_t index = 0; index < state.range(0); ++index) {
            expectSome(countMessage(L"%3u%% %-51.51hs %s\n", static_cast<unsigned>(index), "QB4120, SN 2815", L"[OK]"));
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(formatterCount)->Apply(atAllSizes);

/// To a stream that goes nowhere.
void formatterWrite(benchmark::State& state) {
    const std::unique_ptr<std::FILE, CloseFile> nowhere(std::fopen("/dev/null", "wb"));
    for (auto iteration : state) {
        for (std::int64_t index = 0; index < state.range(0); ++index) {
            expectSome(writeMessage(nowhere.get(), L"%3u%% %-51.51hs %s\n", static_cast<unsigned>(index),
                                    "QB4120, SN 2815", L"[OK]"));
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(formatterWrite)->Apply(atAllSizes);

/// Messages handed to the client.
void consoleWriterMessages(benchmark::State& state) {
    const SilentWriter silent;
    for (auto iteration : state) {
        for (std::int64_t index = 0; index < state.range(0); ++index) {
            expectSome(silent.writer().print(L"%3u%% %-51.51hs %s\n", static_cast<unsigned>(index), "QB4120, SN 2815",
                                             L"[OK]"));
        }
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(consoleWriterMessages)->Apply(atAllSizes);

/// One message with a narrow text of so many lines of 40 characters, as a description is dumped.
void consoleWriterLongText(benchmark::State& state) {
    const SilentWriter silent;
    std::string text;
    for (std::int64_t line = 0; line < state.range(0); ++line) {
        text.append(39, 'x').append("\n");
    }
    for (auto iteration : state) {
        expectSome(silent.writer().print(L"%hs\n", text.c_str()));
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}
BENCHMARK(consoleWriterLongText)->Apply(atAllSizes);

} // namespace
