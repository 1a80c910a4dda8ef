#include "BoundedWriter.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <pty.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

/// Longer than any test waits.
constexpr auto patience = 60s;
/// A limit that is meant to be reached.
constexpr auto soon = 30ms;

/// Two ends of something that bytes go through.
class Connection {
public:
    enum class Kind { pipe, socket, terminal };

    explicit Connection(Kind kind) {
        switch (kind) {
        case Kind::pipe:
            EXPECT_EQ(::pipe(ends_.data()), 0);
            break;
        case Kind::socket:
            EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()), 0);
            break;
        case Kind::terminal:
            EXPECT_EQ(openpty(&ends_[0], &ends_[1], nullptr, nullptr, nullptr), 0);
            break;
        }
    }
    Connection(const Connection&) = delete;
    Connection(Connection&&) = delete;
    Connection& operator=(const Connection&) = delete;
    Connection& operator=(Connection&&) = delete;
    ~Connection() {
        closeReader();
        close(ends_[1]);
    }

    [[nodiscard]] int writer() const { return ends_[1]; }

    /// Writes until nothing more is taken. Returns how many bytes that were.
    [[nodiscard]] std::size_t fill() const {
        const int flags = fcntl(writer(), F_GETFL);
        EXPECT_EQ(fcntl(writer(), F_SETFL, flags | O_NONBLOCK), 0);
        std::size_t size = 0;
        while (write(writer(), ".", 1) == 1) {
            ++size;
        }
        EXPECT_EQ(fcntl(writer(), F_SETFL, flags), 0);
        return size;
    }

    /// Reads so many bytes, or what there is until the end.
    [[nodiscard]] std::string readBytes(std::size_t size) const {
        std::string text(size, '\0');
        std::size_t got = 0;
        for (ssize_t piece = 1; got < size && piece > 0; got += static_cast<std::size_t>(piece)) {
            piece = read(ends_[0], text.data() + got, size - got);
            piece = piece < 0 ? 0 : piece;
        }
        text.resize(got);
        return text;
    }

    void closeReader() {
        if (ends_[0] >= 0) {
            close(ends_[0]);
            ends_[0] = -1;
        }
    }

private:
    std::array<int, 2> ends_{-1, -1};
};

constexpr std::array allKinds{Connection::Kind::pipe, Connection::Kind::socket, Connection::Kind::terminal};

TEST(BoundedWriter, WritesWhatSomebodyReads) {
    for (const Connection::Kind kind : allKinds) {
        const Connection connection(kind);
        BoundedWriter writer(connection.writer(), patience);
        EXPECT_TRUE(writer.write("one, "));
        EXPECT_TRUE(writer.write(""));
        EXPECT_TRUE(writer.write("two"));
        EXPECT_EQ(connection.readBytes(8), "one, two");
    }
}

TEST(BoundedWriter, WaitsForAReaderThatTakesItsTime) {
    const Connection connection(Connection::Kind::pipe);
    const std::size_t before = connection.fill();
    BoundedWriter writer(connection.writer(), patience);
    std::string text;
    for (std::size_t number = 0; text.size() < 500000; ++number) {
        text.append(std::to_string(number)).append(" \xE2\x82\xAC ");
    }
    std::string got;
    std::thread reading([&] { got = connection.readBytes(before + text.size()); });
    EXPECT_TRUE(writer.write(text));
    reading.join();
    EXPECT_TRUE(got == std::string(before, '.') + text);
}

TEST(BoundedWriter, IsNotHeldByAReaderThatNeverReads) {
    for (const Connection::Kind kind : allKinds) {
        const Connection connection(kind);
        EXPECT_GT(connection.fill(), 0U);
        BoundedWriter writer(connection.writer(), soon);
        EXPECT_FALSE(writer.write("lost"));
    }
}

TEST(BoundedWriter, WaitsOnlyOnceForAReaderThatNeverReads) {
    const Connection connection(Connection::Kind::pipe);
    const std::size_t before = connection.fill();
    BoundedWriter writer(connection.writer(), soon);
    EXPECT_FALSE(writer.write("begun"));
    // Not even if it reads again: nobody knows what has been dropped meanwhile.
    EXPECT_EQ(connection.readBytes(before), std::string(before, '.'));
    const auto begin = std::chrono::steady_clock::now();
    for (int count = 0; count < 10000; ++count) {
        ASSERT_FALSE(writer.write("dropped"));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10000 * soon / 2);
}

TEST(BoundedWriter, LeavesTheDescriptorAsOthersHaveIt) {
    const Connection connection(Connection::Kind::pipe);
    const int flags = fcntl(connection.writer(), F_GETFL);
    EXPECT_GT(connection.fill(), 0U);
    BoundedWriter writer(connection.writer(), soon);
    EXPECT_FALSE(writer.write("lost"));
    EXPECT_EQ(fcntl(connection.writer(), F_GETFL), flags);
}

TEST(BoundedWriter, AnotherThreadIsNotHeldEither) {
    const Connection connection(Connection::Kind::pipe);
    EXPECT_GT(connection.fill(), 0U);
    BoundedWriter writer(connection.writer(), soon);
    std::atomic<int> lost = 0;
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread([&] { lost += writer.write("lost") ? 0 : 1; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(lost, 4);
}

TEST(BoundedWriter, TextsOfSeveralThreadsDoNotMix) {
    const Connection connection(Connection::Kind::pipe);
    BoundedWriter writer(connection.writer(), patience);
    constexpr std::size_t size = 100000;
    std::array<std::thread, 4> threads;
    char letter = 'a';
    for (std::thread& thread : threads) {
        thread = std::thread([&writer, letter] { EXPECT_TRUE(writer.write(std::string(size, letter))); });
        ++letter;
    }
    const std::string got = connection.readBytes(threads.size() * size);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(got.size(), threads.size() * size);
    for (std::size_t begin = 0; begin < got.size(); begin += size) {
        EXPECT_EQ(got.find_first_not_of(got[begin], begin), begin + size == got.size() ? got.npos : begin + size);
    }
}

TEST(BoundedWriter, AReaderThatIsGoneIsAFailureAndNothingToWaitFor) {
    const auto former = std::signal(SIGPIPE, SIG_IGN);
    Connection connection(Connection::Kind::pipe);
    BoundedWriter writer(connection.writer(), patience);
    connection.closeReader();
    EXPECT_FALSE(writer.write("lost"));
    EXPECT_FALSE(writer.write("lost"));
    (void)std::signal(SIGPIPE, former);
}

TEST(BoundedWriter, WhatIsNoFileIsAFailure) {
    BoundedWriter writer(-1, patience);
    EXPECT_FALSE(writer.write("lost"));
}

TEST(BoundedWriter, AFileIsWrittenToDirectly) {
    const ScratchFolder folder;
    const std::string path = folder.write("file", "");
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    BoundedWriter writer(file, 0ms);
    EXPECT_TRUE(writer.write(std::string(100000, 'x')));
    EXPECT_EQ(folder.read("file").size(), 100000U);
    close(file);
}

} // namespace
