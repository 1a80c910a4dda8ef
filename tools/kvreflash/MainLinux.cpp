#include "CommandLine.h"
#include "RunningUpdate.h"
#include "ToolOutput.h"

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <malloc.h>
#include <thread>
#include <unistd.h>

namespace {

/// Memory that is given back to the system and taken again costs a page fault for each page. Reading and planning give
/// back large blocks again and again: the process keeps them.
void keepFreedMemory() {
    constexpr int largestKeptBlock = 32 << 20; // the most that the C library allows
    constexpr int mostKept = 256 << 20;
    (void)mallopt(M_MMAP_THRESHOLD, largestKeptBlock);
    (void)mallopt(M_TRIM_THRESHOLD, mostKept);
}

/// Whoever started the tool may have closed a standard stream. A file or connection that is opened later must not get
/// its number, or the session's messages would go there; what is opened here instead takes no byte, so that the loss is
/// noticed.
void occupyStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) == -1) {
            (void)open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

/// Whoever started the tool, in the background or by nohup, may want it to ignore a signal.
bool isIgnored(int signal) {
    struct sigaction given {};
    return sigaction(signal, nullptr, &given) != 0 || given.sa_handler == SIG_IGN;
}

/// Requests to end the tool are answered on a thread of their own, which may do what a signal handler may not.
void answerSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGQUIT, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals, signal);
        }
    }
    if (pthread_sigmask(SIG_BLOCK, &signals, nullptr) != 0) {
        return;
    }
    std::thread([signals] {
        for (int signal = 0; sigwait(&signals, &signal) == 0;) {
            if (signal == SIGHUP) {
                answerLostTerminal();
            } else {
                answerStopRequest();
            }
        }
    }).detach();
}

} // namespace

int main(int argumentCount, char** arguments) {
    keepFreedMemory();
    occupyStandardStreams();
    // A reader of the output that ends early, or a limit of the size of files, must not end an update in the middle;
    // the loss is reported in the end.
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    try {
        answerSignals();
        return executeCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount});
    } catch (const std::exception& exception) {
        say(exception.what());
        return exitFailed;
    }
}
