#include "EventLog.h"

#include "RedirectedStream.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(EventLog, WritesOneJsonLinePerNotification) {
    const ScratchFolder folder;
    EventLog log;
    ASSERT_TRUE(log.open((folder.path() / "events").string()));
    log.write("phase", 0);
    log.write("progress", 42);
    log.write("phase", 4294967295U);
    EXPECT_EQ(folder.read("events"), "{\"event\":\"phase\",\"value\":0}\n"
                                     "{\"event\":\"progress\",\"value\":42}\n"
                                     "{\"event\":\"phase\",\"value\":4294967295}\n")
        << "each line is there at once";
    EXPECT_TRUE(log.close());
}

TEST(EventLog, EmptiesAnExistingFile) {
    const ScratchFolder folder;
    const std::string path = folder.write("events", "of an earlier update\n");
    EventLog log;
    ASSERT_TRUE(log.open(path));
    EXPECT_EQ(folder.read("events"), "");
    EXPECT_TRUE(log.close());
    EXPECT_EQ(folder.read("events"), "");
}

TEST(EventLog, ADashIsStandardError) {
    const RedirectedStream errors(stderr);
    EventLog log;
    ASSERT_TRUE(log.open("-"));
    log.write("elementError", 3);
    EXPECT_TRUE(log.close());
    EXPECT_EQ(errors.received(), "{\"event\":\"elementError\",\"value\":3}\n");
    std::fputs("still open", stderr);
    std::fflush(stderr);
    EXPECT_EQ(errors.received(), "{\"event\":\"elementError\",\"value\":3}\nstill open");
}

TEST(EventLog, CannotBeCreatedWhereThereIsNoFolderOrAFolder) {
    const ScratchFolder folder;
    for (const std::string& path : {folder.text(), (folder.path() / "missing" / "events").string(), std::string()}) {
        EventLog log;
        EXPECT_FALSE(log.open(path)) << path;
    }
}

TEST(EventLog, AFolderAndFileNameMayBeOfAnyAlphabet) {
    const ScratchFolder folder;
    folder.write("gr\xC3\xBCn/other", "");
    EventLog log;
    ASSERT_TRUE(log.open(folder.text() + "/gr\xC3\xBCn/\xE2\x82\xAC"));
    log.write("phase", 1);
    EXPECT_TRUE(log.close());
    EXPECT_EQ(folder.read("gr\xC3\xBCn/\xE2\x82\xAC"), "{\"event\":\"phase\",\"value\":1}\n");
}

TEST(EventLog, WithoutAFileNothingIsWrittenAndNothingIsWrong) {
    EventLog log;
    log.write("phase", 1);
    EXPECT_TRUE(log.close());
    EXPECT_TRUE(log.close());
}

} // namespace
