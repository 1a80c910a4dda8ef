#include "ArchiveFolder.h"
#include "CommandLine.h"
#include "RedirectedStream.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fcntl.h>
#include <optional>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using testing::Not;

/// A terminal that takes bytes as they are.
class Terminal {
public:
    Terminal() {
        termios settings{};
        cfmakeraw(&settings);
        std::array<char, 256> name{};
        exists_ = openpty(&controller_, &terminal_, name.data(), &settings, nullptr) == 0;
        path_ = name.data();
    }
    Terminal(const Terminal&) = delete;
    Terminal(Terminal&&) = delete;
    Terminal& operator=(const Terminal&) = delete;
    Terminal& operator=(Terminal&&) = delete;
    ~Terminal() {
        if (exists_) {
            static_cast<void>(close(terminal_));
            static_cast<void>(close(controller_));
        }
    }

    [[nodiscard]] bool exists() const { return exists_; }
    [[nodiscard]] const std::string& path() const { return path_; }

    /// What has been shown since the last time.
    [[nodiscard]] std::string shown() const {
        static_cast<void>(fcntl(controller_, F_SETFL, O_NONBLOCK));
        std::string text;
        std::array<char, 512> piece{};
        for (ssize_t size = 0; (size = read(controller_, piece.data(), piece.size())) > 0;) {
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

private:
    bool exists_ = false;
    int controller_ = -1;
    int terminal_ = -1;
    std::string path_;
};

class TerminalOutput : public testing::Test {
protected:
    void SetUp() override {
        if (!terminal_.exists()) {
            GTEST_SKIP() << "there are no pseudo terminals here";
        }
        archive_.addWithoutFile(entry("a\x1B[2Jb\xC2\x9B\x7F.bin").board("gr\xC3\xBCn\r", 1));
        archive_.write();
    }

    Terminal terminal_;
    ArchiveFolder archive_;
};

TEST_F(TerminalOutput, ControlCharactersOfMessagesAreMadeVisible) {
    {
        const RedirectedStream output(stdout, terminal_.path());
        EXPECT_EQ(executeCommandLine({"content", "-a", archive_.folder().text()}), 0);
    }
    const std::string shown = terminal_.shown();
    EXPECT_THAT(shown, HasSubstr("Korvel Device Update Tool"));
    EXPECT_THAT(shown, HasSubstr("gr\xC3\xBCn\r"));
    EXPECT_THAT(shown, HasSubstr("a\\x1B[2Jb\\x9B\\x7F.bin"));
    EXPECT_THAT(shown, Not(HasSubstr("\x1B")));
}

TEST_F(TerminalOutput, IntoAFileBytesGoAsTheyAre) {
    EXPECT_THAT(runCaptured({"content", "-a", archive_.folder().text()}).output,
                HasSubstr("a\x1B[2Jb\xC2\x9B\x7F.bin"));
}

TEST_F(TerminalOutput, ControlCharactersOfTheToolsOwnMessagesAreMadeVisible) {
    {
        const RedirectedStream errors(stderr, terminal_.path());
        EXPECT_EQ(executeCommandLine({"version", "\x1B[2J"}), 64);
    }
    EXPECT_EQ(terminal_.shown(), "kvreflash: version: unexpected argument '\\x1B[2J'; "
                                 "run 'kvreflash --help' or 'kvreflash COMMAND --help'\n");
}

TEST_F(TerminalOutput, WithJsonEachStreamIsAsItIs) {
    {
        const RedirectedStream output(stdout);
        const RedirectedStream errors(stderr, terminal_.path());
        EXPECT_EQ(executeCommandLine({"content", "--json", "-a", archive_.folder().text()}), 0);
        EXPECT_THAT(output.received(), HasSubstr("a\\u001b[2Jb\xC2\x9B\x7F.bin"));
    }
    EXPECT_THAT(terminal_.shown(), HasSubstr("a\\x1B[2Jb\\x9B\\x7F.bin"));
    {
        const RedirectedStream output(stdout, terminal_.path());
        const RedirectedStream errors(stderr);
        EXPECT_EQ(executeCommandLine({"content", "--json", "-a", archive_.folder().text()}), 0);
        EXPECT_THAT(errors.received(), HasSubstr("a\x1B[2Jb\xC2\x9B\x7F.bin"));
    }
    EXPECT_THAT(terminal_.shown(), HasSubstr("a\\u001b[2Jb\\x9B\\x7F.bin"));
}

} // namespace
