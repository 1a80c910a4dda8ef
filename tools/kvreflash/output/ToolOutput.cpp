#include "ToolOutput.h"

#include "Streams.h"
#include "Texts.h"

void writeText(std::FILE* stream, const std::string& text) {
    const std::string shown = isTerminal(stream) ? visibleOnTerminal(text) : text;
    std::fwrite(shown.data(), 1, shown.size(), stream);
    std::fflush(stream);
}

void say(const std::string& text) {
    writeText(stderr, "kvreflash: " + visibleInLine(text) + "\n");
}
