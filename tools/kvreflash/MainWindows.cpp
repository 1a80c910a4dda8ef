#include "Session.h"

#include "TextConversion.h"

#include <cstdio>
#include <exception>
#include <windows.h>

int wmain(int argumentCount, wchar_t** arguments) {
    try {
        SetConsoleOutputCP(CP_UTF8);
        std::vector<std::string> narrow;
        for (int index = 1; index < argumentCount; ++index) {
            narrow.push_back(wideToUtf8(arguments[index]));
        }
        return runTool(narrow);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "kvreflash: %s\n", exception.what());
        return exitFailed;
    }
}
