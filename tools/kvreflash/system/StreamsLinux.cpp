#include "Streams.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

bool writesAnyWideText() {
    return true;
}

std::FILE* createFile(const std::filesystem::path& path) {
    constexpr mode_t anyRights = 0666;
    // Opening a pipe waits for its reader otherwise.
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, anyRights);
    if (descriptor < 0) {
        return nullptr;
    }
    const int flags = fcntl(descriptor, F_GETFL);
    std::FILE* file = nullptr;
    if (flags >= 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0) {
        file = fdopen(descriptor, "w");
    }
    if (file == nullptr) {
        const int error = errno;
        close(descriptor);
        errno = error;
    }
    return file;
}

int descriptorOf(std::FILE* stream) {
    return fileno(stream);
}

bool waitsForReader(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && !S_ISREG(status.st_mode);
}

bool writeBytes(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0) {
            errno = EIO;
            return false;
        } else if (errno == EAGAIN) {
            // Whoever shares the descriptor has made it so that it does not wait.
            pollfd room{descriptor, POLLOUT, 0};
            (void)poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::size_t writeWithoutWaiting(int descriptor, std::string_view bytes) {
    // The system takes the bytes for const, but not its type.
    const iovec piece{const_cast<char*>(bytes.data()), bytes.size()};
    constexpr off_t currentPlace = -1;
    const ssize_t written = pwritev2(descriptor, &piece, 1, currentPlace, RWF_NOWAIT);
    return written > 0 ? static_cast<std::size_t>(written) : 0;
}

void keepSignalsFromThread() {
    sigset_t signals;
    sigfillset(&signals);
    // It stops a process in the background that writes to a terminal.
    sigdelset(&signals, SIGTTOU);
    (void)pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}
