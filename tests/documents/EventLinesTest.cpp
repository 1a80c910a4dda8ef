#include "SampleValues.h"

#include <gtest/gtest.h>

#include <string>

// What the lines of events look like, and what they hold when there is little to say. expected/events.jsonl has one of
// each (WholeDocumentsTest.cpp).

namespace {

using namespace KvNReflasher;

const std::string eventTime = "2026-03-01T12:34:56.789Z";

/// The line without the time, which each has.
std::string withoutTime(const std::string& line) {
    const std::string begin = R"({"time":")" + eventTime + R"(",)";
    EXPECT_EQ(begin, line.substr(0, begin.size()));
    return line.substr(begin.size());
}

TEST(EventLines, AreCompactAndBeginWithTimeAndName) {
    EXPECT_EQ("{\"time\":\"2026-03-01T12:34:56.789Z\",\"event\":\"phase\",\"value\":0}\n", phaseEvent(eventTime, 0));
    EXPECT_EQ("{\"time\":\"2026-03-01T12:34:56.789Z\",\"event\":\"locked\"}\n", lockedEvent(eventTime));
}

TEST(EventLines, TheLastPhaseEndsWithTheNumberOfTheCallback) {
    EXPECT_EQ("\"event\":\"phase\",\"value\":4294967295}\n", withoutTime(phaseEvent(eventTime, 0xFFFFFFFF)));
}

TEST(EventLines, OfAPlanCountWhatIsToBeUpdated) {
    KvTPlan plan = samplePlan();
    plan.release.reset();
    EXPECT_EQ("\"event\":\"plan\",\"phaseCount\":2,\"updates\":2,\"supported\":false,\"targetAddress\":\"127.0.0.1\","
              "\"release\":null}\n",
              withoutTime(planEvent(eventTime, plan)));
    plan.elements.front().decision.update = false;
    EXPECT_NE(std::string::npos, planEvent(eventTime, plan).find("\"updates\":1,"));
}

TEST(EventLines, OfAFileThatTheInventoryDoesNotListHaveNoAddress) {
    EXPECT_EQ(
        "\"event\":\"elementStart\",\"value\":2,\"name\":\"QB4120 (A), SN 2815, Updatable file (netz-\u00FC.ini)\","
        "\"address\":\"\",\"file\":\"netz-\u00FC.ini\"}\n",
        withoutTime(elementStartEvent(eventTime, samplePlan().elements.at(2))));
}

TEST(EventLines, ASuccessHasNoReasonAndNoClass) {
    EXPECT_EQ("\"event\":\"elementEnd\",\"value\":0,\"name\":\"QB4120 (A), SN 2815, Firmware\",\"succeeded\":true,"
              "\"result\":\"updated\",\"reason\":\"\"}\n",
              withoutTime(elementEndEvent(eventTime, samplePlan().elements.front(), true, KvEResult::updated, "")));
    EXPECT_EQ("\"event\":\"runEnd\",\"failure\":null,\"retryable\":false,\"message\":\"\",\"exitCode\":0}\n",
              withoutTime(runEndEvent(eventTime, {}, 0)));
    EXPECT_EQ("\"event\":\"verify\",\"counts\":{\"not-listed\":0,\"gone\":0,\"as-expected\":0,\"not-judged\":0,"
              "\"unchanged\":0,\"differs\":0},\"failure\":null}\n",
              withoutTime(verifyEvent(eventTime, {}, {})));
}

TEST(EventLines, TheSameMaySucceedLaterIfTheRunWasStopped) {
    EXPECT_EQ("\"event\":\"runEnd\",\"failure\":\"stopped\",\"retryable\":true,\"message\":\"ended\",\"exitCode\":7}\n",
              withoutTime(runEndEvent(eventTime, {.failure = KvEFailure::stopped, .message = "ended"}, 7)));
}

TEST(EventLines, AreOneLineOfUtf8WhateverNamesHold) {
    KvTPlannedElement element = samplePlan().elements.front();
    element.displayName = "a\xFF\r\n\"b";
    EXPECT_EQ("\"event\":\"elementError\",\"value\":0,\"name\":\"a\uFFFD\\r\\n\\\"b\",\"reason\":\"c\uFFFD\"}\n",
              withoutTime(elementErrorEvent(eventTime, element, "c\xC3")));
}

} // namespace
