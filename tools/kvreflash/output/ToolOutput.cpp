#include "ToolOutput.h"

#include "BoundedWriter.h"
#include "Streams.h"
#include "Texts.h"

namespace {

/// For so long somebody may read nothing of standard error.
constexpr std::chrono::seconds errorReaderLimit{3};

} // namespace

bool writeToErrors(std::string_view text) {
    // Never destroyed: a process may end on one thread while another one still writes.
    static auto* const writer = new BoundedWriter(descriptorOf(stderr), errorReaderLimit);
    return writer->write(text);
}

void writeText(std::FILE* stream, const std::string& text) {
    const std::string shown = isTerminal(stream) ? visibleOnTerminal(text) : text;
    if (stream == stderr) {
        (void)writeToErrors(shown);
        return;
    }
    std::fwrite(shown.data(), 1, shown.size(), stream);
    std::fflush(stream);
}

void say(const std::string& text) {
    writeText(stderr, "kvreflash: " + visibleInLine(text) + "\n");
}
