#include "ReplacedFile.h"

#include "RedirectedStream.h"
#include "ScratchFolder.h"
#include "UserFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using LinkedNames = std::vector<std::string>;

mode_t rightsOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777U;
}

int replaced(const fs::path& path, std::string_view content) {
    ReplacedFile file;
    const int error = file.open(path);
    return error != 0 ? error : file.commit(content);
}

TEST(ReplacedFileOnLinux, ALinkStaysAndWhatItLeadsToIsReplaced) {
    const ScratchFolder folder;
    folder.write("inner/r.json", "earlier");
    fs::create_symlink("inner/r.json", folder.path() / "latest.json");
    fs::create_symlink("latest.json", folder.path() / "link.json");
    ReplacedFile file;
    ASSERT_EQ(file.open(folder.path() / "link.json"), 0);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path() / "inner"), {}), 2) << "created beside the file";
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("inner/r.json"), "new");
    EXPECT_EQ(fs::read_symlink(folder.path() / "latest.json"), "inner/r.json");
    EXPECT_EQ(fs::read_symlink(folder.path() / "link.json"), "latest.json");
    EXPECT_EQ(folder.list(), (LinkedNames{"inner", "inner/r.json", "latest.json", "link.json"}));
}

TEST(ReplacedFileOnLinux, TheNameMayBeAsLongAsNamesCanBe) {
    const ScratchFolder folder;
    const std::string longest = std::string(250, 'x') + ".json";
    EXPECT_EQ(replaced(folder.path() / longest, "new"), 0);
    EXPECT_EQ(folder.list(), LinkedNames{longest});
}

TEST(ReplacedFileOnLinux, ALinkThatTakesThePlaceMeanwhileIsNotFollowed) {
    const ScratchFolder folder;
    folder.write("precious", "stays");
    ReplacedFile file;
    ASSERT_EQ(file.open(folder.path() / "r.json"), 0);
    fs::create_symlink("precious", folder.path() / "r.json");
    EXPECT_EQ(file.commit("new"), 0);
    EXPECT_EQ(folder.read("precious"), "stays");
    EXPECT_EQ(folder.read("r.json"), "new");
    EXPECT_FALSE(fs::is_symlink(folder.path() / "r.json"));
}

TEST(ReplacedFileOnLinux, ALinkThatLeadsNowhereIsRefused) {
    const ScratchFolder folder;
    fs::create_symlink("missing.json", folder.path() / "r.json");
    EXPECT_EQ(replaced(folder.path() / "r.json", "new"), ENOENT);
    EXPECT_EQ(reasonOf(folder.path() / "r.json", ENOENT), "it is a link that leads nowhere");
    fs::create_symlink("ring.json", folder.path() / "ring.json");
    EXPECT_EQ(replaced(folder.path() / "ring.json", "new"), ELOOP);
    EXPECT_FALSE(folder.has("missing.json"));
}

TEST(ReplacedFileOnLinux, AReplacedFileKeepsItsRights) {
    const ScratchFolder folder;
    folder.write("r.json", "earlier");
    for (const mode_t rights : {0640U, 0600U, 0444U, 0666U}) {
        ASSERT_EQ(chmod((folder.path() / "r.json").c_str(), rights), 0);
        EXPECT_EQ(replaced(folder.path() / "r.json", "new"), 0);
        EXPECT_EQ(rightsOf(folder.path() / "r.json"), rights);
    }
}

TEST(ReplacedFileOnLinux, ANewFileHasTheRightsThatTheProcessGives) {
    const ScratchFolder folder;
    const mode_t former = umask(027);
    EXPECT_EQ(replaced(folder.path() / "r.json", "new"), 0);
    umask(former);
    EXPECT_EQ(rightsOf(folder.path() / "r.json"), 0640U);
}

TEST(ReplacedFileOnLinux, APipeThatNobodyReadsIsRefused) {
    const ScratchFolder folder;
    const fs::path pipe = folder.path() / "r.json";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(replaced(pipe, "new"), ENXIO);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(ReplacedFileOnLinux, APipeIsWrittenToAsItIs) {
    const ScratchFolder folder;
    const fs::path pipe = folder.path() / "r.json";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(replaced(pipe, "new"), 0);
    std::array<char, 16> text{};
    EXPECT_EQ(read(reader, text.data(), text.size()), 3);
    EXPECT_STREQ(text.data(), "new");
    EXPECT_EQ(read(reader, text.data(), text.size()), 0) << "the end";
    close(reader);
    EXPECT_TRUE(fs::is_fifo(pipe));
}

TEST(ReplacedFileOnLinux, ALongContentWaitsForTheReaderOfAPipe) {
    const ScratchFolder folder;
    const fs::path pipe = folder.path() / "r.json";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    ReplacedFile file;
    ASSERT_EQ(file.open(pipe), 0);
    ASSERT_EQ(fcntl(reader, F_SETFL, 0), 0);
    std::size_t size = 0;
    std::thread reading([&] {
        std::array<char, 8192> text{};
        for (ssize_t got = 0; (got = read(reader, text.data(), text.size())) > 0;) {
            size += static_cast<std::size_t>(got);
        }
    });
    EXPECT_EQ(file.commit(std::string(1000000, 'x')), 0);
    reading.join();
    EXPECT_EQ(size, 1000000U);
    close(reader);
}

TEST(ReplacedFileOnLinux, ADeviceThatIsFullIsRefused) {
    const ScratchFolder folder;
    fs::create_symlink("/dev/full", folder.path() / "full.json");
    fs::create_symlink("/dev/null", folder.path() / "null.json");
    EXPECT_EQ(replaced(folder.path() / "full.json", "new"), ENOSPC);
    EXPECT_EQ(replaced(folder.path() / "null.json", "new"), 0);
    EXPECT_TRUE(fs::is_symlink(folder.path() / "null.json"));
}

TEST(ReplacedFileOnLinux, WhatIsNoFileIsRefused) {
    const ScratchFolder folder;
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{AF_UNIX, {}};
    const std::string path = folder.text() + "/r.json";
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(replaced(path, "new"), ENXIO);
    close(listener);
}

TEST(ReplacedFileOnLinux, TheFileOfAStandardStreamIsWrittenToInItsTurn) {
    const ScratchFolder folder;
    fs::create_symlink("/dev/stdout", folder.path() / "r.json");
    const RedirectedStream output(stdout);
    std::fputs("before, ", stdout);
    EXPECT_EQ(replaced(folder.path() / "r.json", "the report"), 0);
    std::fputs(", after", stdout);
    std::fflush(stdout);
    EXPECT_EQ(output.received(), "before, the report, after");
}

} // namespace
