#include "Session.h"
#include "ToolOutput.h"

#include <csignal>
#include <exception>
#include <fcntl.h>
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

} // namespace

int main(int argumentCount, char** arguments) {
    occupyStandardStreams();
    // A reader of the output that ends early must not end an update in the middle; the loss is told in the end.
    (void)std::signal(SIGPIPE, SIG_IGN);
    try {
        return runTool({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount});
    } catch (const std::exception& exception) {
        say(exception.what());
        return exitFailed;
    }
}
