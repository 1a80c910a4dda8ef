#include "CommandLine.h"
#include "RunningUpdate.h"

#include "Texts.h"
#include "ToolOutput.h"

#include <exception>
#include <windows.h>

namespace {

/// Called by the system on a thread of its own.
BOOL WINAPI answerConsoleEvent(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    answerInterrupt();
    return TRUE;
}

} // namespace

int wmain(int argumentCount, wchar_t** arguments) {
    try {
        SetConsoleOutputCP(CP_UTF8);
        SetConsoleCtrlHandler(answerConsoleEvent, TRUE);
        std::vector<std::string> narrow;
        for (int index = 1; index < argumentCount; ++index) {
            narrow.push_back(utf8Of(arguments[index]));
            if (narrow.back().empty() && *arguments[index] != L'\0') {
                say("argument " + std::to_string(index) + " is not valid Unicode");
                return exitUsage;
            }
        }
        return executeCommandLine(narrow);
    } catch (const std::exception& exception) {
        say(exception.what());
        return exitFailed;
    }
}
