#include "Network.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace {

class NetworkTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(startSockets()); }
    void TearDown() override { stopSockets(); }
};

std::array<unsigned, 4> bytesOf(std::uint32_t address) {
    std::array<unsigned char, 4> bytes{};
    std::memcpy(bytes.data(), &address, sizeof address);
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

constexpr std::array<unsigned, 4> loopback{127, 0, 0, 1};

} // namespace

TEST_F(NetworkTest, LocalhostIsTheLoopbackAddressInNetworkOrder) {
    std::uint32_t address = 0;
    ASSERT_TRUE(resolveHostName("localhost", address));
    EXPECT_EQ(bytesOf(address), loopback);
}

TEST_F(NetworkTest, TheCaseOfAHostNameDoesNotMatter) {
    std::uint32_t address = 0;
    ASSERT_TRUE(resolveHostName("LocalHost", address));
    EXPECT_EQ(bytesOf(address), loopback);
}

TEST_F(NetworkTest, ADottedAddressIsTakenAsItIs) {
    std::uint32_t address = 0;
    ASSERT_TRUE(resolveHostName("192.0.2.17", address));
    EXPECT_EQ(bytesOf(address), (std::array<unsigned, 4>{192, 0, 2, 17}));
}

TEST_F(NetworkTest, ANameThatNobodyHasLeavesTheAddressAsItWas) {
    std::uint32_t address = 4711;
    EXPECT_FALSE(resolveHostName("no-such-host.invalid", address));
    EXPECT_EQ(address, 4711U);
}

TEST_F(NetworkTest, ANameThatCannotBeOneIsNotResolved) {
    std::uint32_t address = 4711;
    EXPECT_FALSE(resolveHostName("no such host", address));
    EXPECT_FALSE(resolveHostName(std::string(5000, 'x'), address));
    EXPECT_EQ(address, 4711U);
}

TEST(Network, SocketsMayBeStartedAgainBeforeTheyAreStopped) {
    ASSERT_TRUE(startSockets());
    ASSERT_TRUE(startSockets());
    stopSockets();
    std::uint32_t address = 0;
    EXPECT_TRUE(resolveHostName("localhost", address));
    stopSockets();
}
