#include "CommandLine.h"
#include "RunningUpdate.h"

#include "Texts.h"
#include "ToolOutput.h"

#include <chrono>
#include <exception>
#include <windows.h>

namespace {

/// The system ends a program some seconds after its console was closed; sooner waiting must be given up.
constexpr std::chrono::seconds closingPatience{3};

/// Called by the system on a thread of its own.
BOOL WINAPI answerConsoleEvent(DWORD event) {
    switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
        answerStopRequest();
        return TRUE;
    case CTRL_CLOSE_EVENT:
    case CTRL_LOGOFF_EVENT:
    case CTRL_SHUTDOWN_EVENT:
        answerClosing(closingPatience);
        Sleep(INFINITE); // the process ends when this returns; it is to end by itself, with its exit code
        return TRUE;
    default:
        return FALSE;
    }
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
