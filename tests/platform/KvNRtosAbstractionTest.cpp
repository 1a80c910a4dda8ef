#include "KvNRtosAbstraction.h"

#include "EnvironmentVariable.h"
#include "KvEmulation.h"
#include "TimeScale.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <string>

using KvNRtosAbstraction::ipToString;
using KvNRtosAbstraction::stringToIpV4;

namespace {

/// An error list that lasts as long as the test.
class ErrorList {
public:
    ErrorList() : list_(KvCErrorManager::getInstance()->createErrorList(0, 1, 20, 5, 300)) {}
    ErrorList(const ErrorList&) = delete;
    ErrorList(ErrorList&&) = delete;
    ErrorList& operator=(const ErrorList&) = delete;
    ErrorList& operator=(ErrorList&&) = delete;
    ~ErrorList() { KvCErrorManager::getInstance()->deleteErrorList(list_); }

    KvCErrorList& operator*() const { return *list_; }
    KvCErrorList* operator->() const { return list_; }

private:
    KvCErrorList* list_;
};

std::uint32_t addressOf(std::array<unsigned char, 4> bytes) {
    std::uint32_t address = 0;
    std::memcpy(&address, bytes.data(), bytes.size());
    return address;
}

} // namespace

struct ValidAddress {
    const char* text;
    std::array<unsigned char, 4> bytes;
    const char* printed;
};

TEST(IpV4Text, GivesTheBytesInOrderAndComesBackWithoutLeadingZeros) {
    const ValidAddress cases[] = {
        {"127.0.0.1", {127, 0, 0, 1}, "127.0.0.1"},
        {"0.0.0.0", {0, 0, 0, 0}, "0.0.0.0"},
        {"255.255.255.255", {255, 255, 255, 255}, "255.255.255.255"},
        {"10.20.30.40", {10, 20, 30, 40}, "10.20.30.40"},
        {"010.009.0008.000000000000000000000000255", {10, 9, 8, 255}, "10.9.8.255"},
    };
    for (const ValidAddress& expected : cases) {
        const ErrorList errors;
        const std::uint32_t address = stringToIpV4(*errors, expected.text);
        EXPECT_EQ(address, addressOf(expected.bytes)) << expected.text;
        EXPECT_EQ(errors->getErrorCount(), 0U) << expected.text;
        std::array<char, 256> buffer{};
        ipToString(address, buffer.data(), buffer.size() - 1);
        EXPECT_STREQ(buffer.data(), expected.printed);
    }
}

TEST(IpV4Text, AnythingElseIsAnErrorAndZero) {
    for (const char* const text : {"",
                                   ".",
                                   "...",
                                   "1",
                                   "1.2.3",
                                   "1.2.3.",
                                   ".1.2.3",
                                   "1.2.3.4.",
                                   "1.2.3.4.5",
                                   "1..2.3",
                                   "256.0.0.1",
                                   "1.2.3.256",
                                   "1.2.3.4294967297",
                                   "1.2.3.18446744073709551617",
                                   "-1.2.3.4",
                                   "+1.2.3.4",
                                   " 1.2.3.4",
                                   "1.2.3.4 ",
                                   "1.2.3.4\n",
                                   "1. 2.3.4",
                                   "0x1.2.3.4",
                                   "1.2.3.a",
                                   "1,2,3,4",
                                   "localhost",
                                   "1.2.3.4/24"}) {
        const ErrorList errors;
        EXPECT_EQ(stringToIpV4(*errors, text), 0U) << text;
        ASSERT_EQ(errors->getErrorCount(), 1U) << text;
        EXPECT_EQ(errors->getErrorCode(0), 0x2006U);
        EXPECT_EQ(errors->getOriginNode(0), 0U);
        EXPECT_EQ(errors->getTimeStamp(0), 0U);
        std::string expected(1, '"');
        expected += text;
        expected += "\" is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are expected.";
        EXPECT_EQ(errors->getErrorText(0), expected);
    }
}

TEST(IpV4Text, NullIsAnErrorToo) {
    const ErrorList errors;
    EXPECT_EQ(stringToIpV4(*errors, nullptr), 0U);
    EXPECT_EQ(errors->getErrorCount(), 1U);
}

TEST(IpV4Text, ATextThatDoesNotFitIsCut) {
    std::array<char, 8> buffer{};
    buffer.fill('x');
    ipToString(addressOf({192, 168, 1, 2}), buffer.data(), 5);
    EXPECT_STREQ(buffer.data(), "192.1");
    EXPECT_EQ(buffer[6], 'x');
}

TEST(IpV4Text, ExactlyTheLengthFits) {
    std::array<char, 16> buffer{};
    ipToString(addressOf({255, 255, 255, 255}), buffer.data(), 15);
    EXPECT_STREQ(buffer.data(), "255.255.255.255");
}

TEST(IpV4Text, WithoutAnyLengthOnlyTheEndIsWritten) {
    std::array<char, 2> buffer{'x', 'x'};
    ipToString(addressOf({1, 2, 3, 4}), buffer.data(), 0);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], 'x');
}

struct Scale {
    const char* text;
    double factor;
};

TEST(TimeScale, IsANumberFromZeroOnOrElseRealTime) {
    const Scale cases[] = {
        {nullptr, 1.0}, {"", 1.0},       {"0", 0.0},   {"0.0", 0.0},  {"1", 1.0},     {"0.25", 0.25},
        {"10", 10.0},   {"1e-3", 0.001}, {"-1", 1.0},  {"-0", 1.0},   {"fast", 1.0},  {"2x", 1.0},
        {" 2", 1.0},    {"inf", 1.0},    {"nan", 1.0}, {"1e99", 1.0}, {"1e999", 1.0},
    };
    for (const Scale& expected : cases) {
        EXPECT_EQ(timeScaleOf(expected.text), expected.factor) << (expected.text != nullptr ? expected.text : "(none)");
    }
}

TEST(Usleep, LastsAsTheTimeScaleSays) {
    using namespace std::chrono_literals;
    const auto lasts = [](const char* scale, std::uint32_t microseconds) {
        const EnvironmentVariable variable("KV_TIME_SCALE", scale);
        const auto begin = std::chrono::steady_clock::now();
        KvNRtosAbstraction::usleep(microseconds);
        return std::chrono::steady_clock::now() - begin;
    };
    EXPECT_GE(lasts("1", 4000), 4ms);
    EXPECT_GE(lasts("0.5", 8000), 4ms);
    EXPECT_LT(lasts("0", 4000000000U), 60s);
}

TEST(Usleep, IsCountedUnscaled) {
    const KvEmulation::KvTLedger before = KvEmulation::ledger();
    KvNRtosAbstraction::usleep(3);
    KvNRtosAbstraction::usleep(0);
    KvNRtosAbstraction::usleep(5);
    const KvEmulation::KvTLedger after = KvEmulation::ledger();
    EXPECT_EQ(after.sleptMicroseconds - before.sleptMicroseconds, 8U);
    EXPECT_EQ(after.sleeps - before.sleeps, 3U);
}
