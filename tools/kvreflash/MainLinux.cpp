#include "Session.h"

#include <cstdio>
#include <exception>

int main(int argumentCount, char** arguments) {
    try {
        return runTool({arguments + 1, arguments + argumentCount});
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "kvreflash: %s\n", exception.what());
        return exitFailed;
    }
}
