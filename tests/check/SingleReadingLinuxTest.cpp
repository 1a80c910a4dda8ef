#include "CheckFixture.h"

#include <atomic>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

/// Offers a text to whoever opens a pipe first, and nothing to others.
class OneReading {
public:
    OneReading(std::string path, std::string text)
        : path_(std::move(path)), text_(std::move(text)), isMade_(mkfifo(path_.c_str(), 0600) == 0),
          writer_([this] { serve(); }) {}
    OneReading(const OneReading&) = delete;
    OneReading& operator=(const OneReading&) = delete;
    ~OneReading() {
        isDone_ = true;
        writer_.join();
    }

    [[nodiscard]] bool isMade() const { return isMade_; }
    [[nodiscard]] bool isWritten() const { return isWritten_; }

private:
    void serve() {
        while (!isDone_) {
            // Fails as long as nobody reads, and lets those go on that wait for a writer.
            const int file = open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (file < 0) {
                std::this_thread::yield();
                continue;
            }
            if (!isWritten_) {
                isWritten_ = write(file, text_.data(), text_.size()) == static_cast<ssize_t>(text_.size());
            }
            close(file);
        }
    }

    std::string path_;
    std::string text_;
    bool isMade_;
    std::atomic<bool> isWritten_ = false;
    std::atomic<bool> isDone_ = false;
    std::thread writer_;
};

using CheckOnce = CheckTest;

TEST_F(CheckOnce, ReaderAndWarningsSeeTheTextOfOneReading) {
    const OneReading description(folder().text() + "/archive.json",
                                 ArchiveBuilder().entry(goodEntry().set("unknown", "1")).text());
    ASSERT_TRUE(description.isMade());
    EXPECT_EQ("unknown-key", codesOf(findingsOfArchive(options())));
    EXPECT_TRUE(description.isWritten());
}

} // namespace
