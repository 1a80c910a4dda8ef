#include "EventLog.h"

#include "RedirectedStream.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>

namespace {

using namespace KvNReflasher;

class EventLogTest : public testing::Test {
protected:
    void write(KvEEvent event, std::uint32_t value) { log.write({event, value}, *session_); }
    /// Lines without their times, which must be well-formed.
    [[nodiscard]] static std::string withoutTimes(const std::string& lines) {
        static const std::regex time(R"(\{"time":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z",)");
        return std::regex_replace(lines, time, "{");
    }

    EventLog log;
    const ScratchFolder folder;

private:
    std::unique_ptr<KvISession> session_{KvISession::createInstance({})};
};

TEST_F(EventLogTest, WritesOneJsonLinePerNotification) {
    ASSERT_TRUE(log.open((folder.path() / "events").string()));
    write(KvEEvent::phase, 0);
    write(KvEEvent::progress, 42);
    write(KvEEvent::phase, 4294967295U);
    EXPECT_EQ(withoutTimes(folder.read("events")), "{\"event\":\"phase\",\"value\":0}\n"
                                                   "{\"event\":\"progress\",\"value\":42}\n"
                                                   "{\"event\":\"phase\",\"value\":4294967295}\n")
        << "each line is there at once";
    EXPECT_TRUE(log.close());
}

TEST_F(EventLogTest, EmptiesAnExistingFile) {
    const std::string path = folder.write("events", "of an earlier update\n");
    ASSERT_TRUE(log.open(path));
    EXPECT_EQ(folder.read("events"), "");
    EXPECT_TRUE(log.close());
    EXPECT_EQ(folder.read("events"), "");
}

TEST_F(EventLogTest, ADashIsStandardError) {
    const RedirectedStream errors(stderr);
    ASSERT_TRUE(log.open("-"));
    write(KvEEvent::phase, 3);
    EXPECT_TRUE(log.close());
    EXPECT_EQ(withoutTimes(errors.received()), "{\"event\":\"phase\",\"value\":3}\n");
    std::fputs("still open", stderr);
    std::fflush(stderr);
    EXPECT_EQ(withoutTimes(errors.received()), "{\"event\":\"phase\",\"value\":3}\nstill open");
}

TEST_F(EventLogTest, CannotBeCreatedWhereThereIsNoFolderOrAFolder) {
    for (const std::string& path : {folder.text(), (folder.path() / "missing" / "events").string(), std::string()}) {
        EXPECT_FALSE(log.open(path)) << path;
    }
}

TEST_F(EventLogTest, AFolderAndFileNameMayBeOfAnyAlphabet) {
    folder.write("gr\xC3\xBCn/other", "");
    ASSERT_TRUE(log.open(folder.text() + "/gr\xC3\xBCn/\xE2\x82\xAC"));
    write(KvEEvent::phase, 1);
    EXPECT_TRUE(log.close());
    EXPECT_EQ(withoutTimes(folder.read("gr\xC3\xBCn/\xE2\x82\xAC")), "{\"event\":\"phase\",\"value\":1}\n");
}

TEST_F(EventLogTest, APercentageIsNotRepeatedWithinItsPhase) {
    ASSERT_TRUE(log.open((folder.path() / "events").string()));
    for (const std::uint32_t phase : {0U, 1U}) {
        write(KvEEvent::phase, phase);
        for (const std::uint32_t percentage : {50U, 50U, 100U, 100U}) {
            write(KvEEvent::progress, percentage);
        }
    }
    EXPECT_TRUE(log.close());
    const std::string progress = "{\"event\":\"progress\",\"value\":50}\n{\"event\":\"progress\",\"value\":100}\n";
    EXPECT_EQ(withoutTimes(folder.read("events")),
              "{\"event\":\"phase\",\"value\":0}\n" + progress + "{\"event\":\"phase\",\"value\":1}\n" + progress);
}

TEST_F(EventLogTest, AStallIsNotWritten) {
    ASSERT_TRUE(log.open((folder.path() / "events").string()));
    write(KvEEvent::stalled, 30);
    EXPECT_TRUE(log.close());
    EXPECT_EQ("", folder.read("events"));
}

TEST_F(EventLogTest, WithoutAFileNothingIsWrittenAndNothingIsWrong) {
    write(KvEEvent::phase, 1);
    EXPECT_TRUE(log.close());
    EXPECT_TRUE(log.close());
}

} // namespace
