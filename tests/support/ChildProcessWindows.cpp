// What tests need of the operating system.

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <array>
#include <windows.h>

namespace {

void closeEnd(HANDLE& end) {
    if (end != nullptr) {
        static_cast<void>(CloseHandle(end));
        end = nullptr;
    }
}

/// A pipe; the child inherits nothing of it but `childEnd`.
void makePipe(HANDLE& readEnd, HANDLE& writeEnd, HANDLE& childEnd) {
    SECURITY_ATTRIBUTES notInherited{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    EXPECT_TRUE(CreatePipe(&readEnd, &writeEnd, &notInherited, 0));
    EXPECT_TRUE(SetHandleInformation(childEnd, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT));
}

/// The arguments of these tests hold no quotes.
std::string commandLine(const std::string& program, const std::vector<std::string>& arguments) {
    std::string line = '"' + program + '"';
    for (const std::string& argument : arguments) {
        line += " \"" + argument + '"';
    }
    return line;
}

} // namespace

struct ChildProcess::Impl {
    HANDLE process = nullptr;
    HANDLE input = nullptr;
    HANDLE output = nullptr;

    DWORD reap() {
        DWORD code = 0;
        if (process != nullptr) {
            static_cast<void>(WaitForSingleObject(process, INFINITE));
            EXPECT_TRUE(GetExitCodeProcess(process, &code));
            closeEnd(process);
        }
        return code;
    }
};

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
    : impl_(std::make_unique<Impl>()) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    makePipe(startup.hStdInput, impl_->input, startup.hStdInput);
    makePipe(impl_->output, startup.hStdOutput, startup.hStdOutput);
    std::string line = commandLine(program, arguments);
    PROCESS_INFORMATION child{};
    EXPECT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &child))
        << "cannot start " << line;
    impl_->process = child.hProcess;
    closeEnd(child.hThread);
    closeEnd(startup.hStdInput);
    closeEnd(startup.hStdOutput);
}

ChildProcess::~ChildProcess() {
    kill();
    closeEnd(impl_->input);
    closeEnd(impl_->output);
}

bool ChildProcess::send(const std::string& text) {
    DWORD written = 0;
    return WriteFile(impl_->input, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != 0 &&
           written == text.size();
}

std::string ChildProcess::receive() {
    std::array<char, 512> piece{};
    DWORD size = 0;
    if (ReadFile(impl_->output, piece.data(), static_cast<DWORD>(piece.size()), &size, nullptr) == 0) {
        return {};
    }
    return {piece.data(), size};
}

int ChildProcess::finish() {
    closeEnd(impl_->input);
    return static_cast<int>(impl_->reap());
}

void ChildProcess::kill() {
    if (impl_->process != nullptr) {
        static_cast<void>(TerminateProcess(impl_->process, 1));
    }
    static_cast<void>(impl_->reap());
}
