#include "Timestamp.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono;

TEST(Timestamp, IsReadAndWrittenInUtc) {
    const sys_seconds moment = sys_days(2026y / November / 22) + 10h + 15min + 1s;
    EXPECT_EQ(textOfMoment(moment), "2026-11-22T10:15:01Z");
    EXPECT_EQ(momentOf("2026-11-22T10:15:01Z"), moment);
    EXPECT_EQ(momentOf("1970-01-01T00:00:00Z"), sys_seconds());
    EXPECT_EQ(momentOf("2024-02-29T23:59:59Z"), sys_days(2024y / February / 29) + 23h + 59min + 59s);
}

TEST(Timestamp, OfNoMomentIsNone) {
    for (const char* text :
         {"", "2026-11-22", "2026-11-22T10:15:01", "2026-11-22T10:15:01z", "2026-11-22 10:15:01Z",
          "2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z", "2026-02-29T00:00:00Z", "2026-11-31T00:00:00Z",
          "2026-11-22T24:00:00Z", "2026-11-22T10:60:00Z", "2026-11-22T10:15:60Z", "2026-11-22T10:15:01+00:00",
          "-026-11-22T10:15:01Z", "2026-11-22T10:15:01Z "}) {
        EXPECT_EQ(momentOf(text), std::nullopt) << text;
    }
}

TEST(Timestamp, OfSignersIsADateOrATime) {
    EXPECT_EQ(momentOfSigner("20261122Z"), momentOf("2026-11-22T00:00:00Z"));
    EXPECT_EQ(momentOfSigner("202611221015Z"), momentOf("2026-11-22T10:15:00Z"));
    EXPECT_EQ(momentOfSigner("20261122101501Z"), momentOf("2026-11-22T10:15:01Z"));
    const auto local = momentOfSigner("20261122");
    ASSERT_TRUE(local);
    EXPECT_LE(abs(*local - *momentOf("2026-11-22T00:00:00Z")), 14h);
    for (const char* text : {"", "Z", "2026", "2026112", "202611221", "20261322", "20260230", "202611222500",
                             "2026112210150", "2026-11-22", "20261122T101501Z", "99999999999999999999"}) {
        EXPECT_EQ(momentOfSigner(text), std::nullopt) << text;
    }
}

} // namespace
