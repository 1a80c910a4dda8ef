#include "CheckFixture.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

/// Counts how often a file is opened.
class OpeningCount {
public:
    explicit OpeningCount(const std::string& path) : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        // Without the events in between, one opening behind another would be told as one.
        EXPECT_GE(inotify_add_watch(events_, path.c_str(), IN_OPEN | IN_ACCESS | IN_CLOSE), 0);
    }
    OpeningCount(const OpeningCount&) = delete;
    OpeningCount& operator=(const OpeningCount&) = delete;
    ~OpeningCount() { close(events_); }

    /// The number of openings since the last call.
    [[nodiscard]] unsigned take() const {
        std::array<char, 65536> bytes{};
        const ssize_t size = read(events_, bytes.data(), bytes.size());
        unsigned openings = 0;
        inotify_event event{};
        for (std::size_t place = 0; size > 0 && place < static_cast<std::size_t>(size); place += sizeof event) {
            std::memcpy(&event, bytes.data() + place, sizeof event);
            openings += (event.mask & IN_OPEN) != 0 ? 1 : 0;
        }
        return openings;
    }

private:
    int events_;
};

using CheckOnce = CheckTest;

TEST_F(CheckOnce, ReaderAndWarningsSeeTheTextOfOneReading) {
    folder().write("archive.json", ArchiveBuilder().entry(goodEntry().set("unknown", "1")).text());
    const OpeningCount openings(folder().text() + "/archive.json");
    EXPECT_EQ("unknown-key", codesOf(findingsOfArchive(options())));
    EXPECT_EQ(openings.take(), 1U);
    static_cast<void>(folder().read("archive.json"));
    static_cast<void>(folder().read("archive.json"));
    EXPECT_EQ(openings.take(), 2U);
}

} // namespace
