// What tests need of the operating system.

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void closeEnd(int& end) {
    if (end >= 0) {
        static_cast<void>(::close(end));
        end = -1;
    }
}

} // namespace

struct ChildProcess::Impl {
    pid_t process = -1;
    int input = -1;
    int output = -1;

    void reap(int* status) {
        if (process > 0) {
            static_cast<void>(::waitpid(process, status, 0));
            process = -1;
        }
    }
};

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : impl_(std::make_unique<Impl>()) {
    std::array<int, 2> toChild{-1, -1};
    std::array<int, 2> fromChild{-1, -1};
    EXPECT_EQ(::pipe2(toChild.data(), O_CLOEXEC), 0);
    EXPECT_EQ(::pipe2(fromChild.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    std::vector<char*> texts{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    EXPECT_EQ(::posix_spawn(&impl_->process, program.c_str(), &actions, nullptr, texts.data(), environ), 0)
        << "cannot start " << program;
    ::posix_spawn_file_actions_destroy(&actions);
    closeEnd(toChild[0]);
    closeEnd(fromChild[1]);
    impl_->input = toChild[1];
    impl_->output = fromChild[0];
}

ChildProcess::~ChildProcess() {
    kill();
    closeEnd(impl_->input);
    closeEnd(impl_->output);
}

bool ChildProcess::send(const std::string& text) {
    return ::write(impl_->input, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::string ChildProcess::receive() {
    std::array<char, 512> piece{};
    const ssize_t size = ::read(impl_->output, piece.data(), piece.size());
    return {piece.data(), static_cast<std::size_t>(size > 0 ? size : 0)};
}

int ChildProcess::finish() {
    closeEnd(impl_->input);
    int status = 0;
    impl_->reap(&status);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ChildProcess::kill() {
    if (impl_->process > 0) {
        static_cast<void>(::kill(impl_->process, SIGKILL));
    }
    impl_->reap(nullptr);
}
