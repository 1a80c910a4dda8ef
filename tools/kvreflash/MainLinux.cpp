#include "CommandLine.h"
#include "RunningUpdate.h"
#include "ToolOutput.h"

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

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

/// Interrupts are answered on a thread of their own, which may do what a signal handler may not. Whoever started the
/// tool in the background may want it to ignore them.
void answerInterrupts() {
    struct sigaction given {};
    if (sigaction(SIGINT, nullptr, &given) != 0 || given.sa_handler == SIG_IGN) {
        return;
    }
    sigset_t interrupts;
    sigemptyset(&interrupts);
    sigaddset(&interrupts, SIGINT);
    if (pthread_sigmask(SIG_BLOCK, &interrupts, nullptr) != 0) {
        return;
    }
    std::thread([interrupts] {
        for (int signal = 0; sigwait(&interrupts, &signal) == 0;) {
            answerInterrupt();
        }
    }).detach();
}

} // namespace

int main(int argumentCount, char** arguments) {
    occupyStandardStreams();
    // A reader of the output that ends early must not end an update in the middle; the loss is reported in the end.
    (void)std::signal(SIGPIPE, SIG_IGN);
    try {
        answerInterrupts();
        return executeCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount});
    } catch (const std::exception& exception) {
        say(exception.what());
        return exitFailed;
    }
}
