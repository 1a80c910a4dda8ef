#include "KvCVersion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

/// The components in the order of the 64-bit number: MAJ, MIN, MAI, SPB, SPN, PLV.
using Components = std::array<unsigned, 6>;

Components componentsOf(const KvCVersion& version) {
    return {version.getMar(), version.getMir(), version.getMai(), version.getSpb(), version.getSpn(), version.getPlv()};
}

KvCVersion fromNumber(std::uint64_t number) {
    KvCVersion version;
    version.setByULong64(number);
    return version;
}

/// Versions near each other, so that they often agree in their first components.
std::vector<KvCVersion> sampleVersions(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    const auto upTo = [&random](unsigned limit) { return std::uniform_int_distribution<unsigned>(0, limit)(random); };
    const auto small = [&upTo](unsigned limit) { return upTo(3) == 0 ? upTo(limit) : upTo(2); };
    std::vector<KvCVersion> versions;
    for (std::size_t index = 0; index < count; ++index) {
        versions.emplace_back(static_cast<std::uint8_t>(small(255)), static_cast<std::uint8_t>(small(255)),
                              static_cast<std::uint8_t>(small(255)), static_cast<std::uint8_t>(small(255)),
                              static_cast<std::uint16_t>(small(65535)), static_cast<std::uint16_t>(small(65535)));
    }
    return versions;
}

} // namespace

static_assert(noexcept(KvCVersion("1.0")));

struct TextCase {
    const char* text;
    Components components;
    const char* printed;
};

TEST(VersionText, GivesItsComponentsAndPrintsInItsShortForm) {
    const TextCase cases[] = {
        {"23.2a12", {23, 2, 0, 1, 12, 0}, "23.2a12"},
        {"5.0", {5, 0, 0, 0, 0, 0}, "5.0"},
        {"3.5.2", {3, 5, 2, 0, 0, 0}, "3.5.2"},
        {"3.5.0.4", {3, 5, 0, 0, 4, 0}, "3.5.0.4"},
        {"23.2.1b3.1", {23, 2, 1, 2, 3, 1}, "23.2.1b3.1"},
        {"5", {5, 0, 0, 0, 0, 0}, "5.0"},
        {"0", {0, 0, 0, 0, 0, 0}, "0.0"},
        {"5.0.0", {5, 0, 0, 0, 0, 0}, "5.0"},
        {"5.0.0.0.0", {5, 0, 0, 0, 0, 0}, "5.0"},
        {"5.1.0.0.7", {5, 1, 0, 0, 0, 7}, "5.1.0.0.7"},
        {"5.1.2.3.4", {5, 1, 2, 0, 3, 4}, "5.1.2.3.4"},
        {"5.1.2.3.0", {5, 1, 2, 0, 3, 0}, "5.1.2.3"},
        {"5a3", {5, 0, 0, 1, 3, 0}, "5.0a3"},
        {"5b3.9", {5, 0, 0, 2, 3, 9}, "5.0b3.9"},
        {"5.1a0", {5, 1, 0, 1, 0, 0}, "5.1a0"},
        {"5.1a0.0", {5, 1, 0, 1, 0, 0}, "5.1a0"},
        {"5.1.0b2", {5, 1, 0, 2, 2, 0}, "5.1b2"},
        {"5.1a0.2", {5, 1, 0, 1, 0, 2}, "5.1a0.2"},
        {"255.255.255.65535.65535", {255, 255, 255, 0, 65535, 65535}, "255.255.255.65535.65535"},
        {"255.255.255b65535.65535", {255, 255, 255, 2, 65535, 65535}, "255.255.255b65535.65535"},
        {"#0", {0, 0, 0, 0, 0, 0}, "0.0"},
        {"#12884901888", {0, 0, 0, 3, 0, 0}, "#12884901888"},
        {"#18446744073709551615", {255, 255, 255, 255, 65535, 65535}, "#18446744073709551615"},
        {"#361413870096482304", {5, 4, 0, 0, 0, 0}, "5.4"},
        {"#4294967294", {0, 0, 0, 0, 65535, 65534}, "0.0.0.65535.65534"},
    };
    for (const TextCase& expected : cases) {
        const KvCVersion version(expected.text);
        EXPECT_EQ(componentsOf(version), expected.components) << expected.text;
        EXPECT_STREQ(version.getAsString().c_str(), expected.printed);
    }
}

TEST(VersionText, ALeadingZeroDoesNoHarm) {
    EXPECT_EQ(KvCVersion("0023.02a012"), KvCVersion("23.2a12"));
    EXPECT_EQ(KvCVersion("00000000000000000000000000003.05.0000002.000000004.01"), KvCVersion("3.5.2.4.1"));
    EXPECT_EQ(KvCVersion("#000000000000000000000012884901888"), KvCVersion("#12884901888"));
}

TEST(VersionText, AnythingElseIsTheVersionOfZeros) {
    for (const char* const text : {"",
                                   " ",
                                   ".",
                                   "a",
                                   "b1",
                                   "a1",
                                   ".1",
                                   "1.",
                                   "1..2",
                                   "1.2.",
                                   "1.2.3.",
                                   "1.2.3.4.",
                                   "1.2.3.4.5.",
                                   "1.2.3.4.5.6",
                                   "1.2a",
                                   "1.2a.1",
                                   "1.2a1.",
                                   "1.2a1.2.3",
                                   "1.2a1b2",
                                   "1.2a1a2",
                                   "1.2.a1",
                                   "1.2.3.a1",
                                   "1.2.3.4a1",
                                   "1.2c1",
                                   "1.2A1",
                                   "1.2B1",
                                   "1.2 ",
                                   " 1.2",
                                   "1 .2",
                                   "1.2\n",
                                   "+1.2",
                                   "-1.2",
                                   "1.-2",
                                   "1.+2",
                                   "1.2a-1",
                                   "v1.2",
                                   "1.2x",
                                   "1,2",
                                   "0x1.2",
                                   "1.2a1 ",
                                   "256",
                                   "1.256",
                                   "1.2.256",
                                   "1.2.3.65536",
                                   "1.2.3.4.65536",
                                   "1.2a65536",
                                   "1.2b1.65536",
                                   "99999999999999999999.1",
                                   "1.2.3.99999999999999999999",
                                   "#",
                                   "#-1",
                                   "#+1",
                                   "# 1",
                                   "#1 ",
                                   "#1.2",
                                   "##1",
                                   "#18446744073709551616",
                                   "#99999999999999999999999",
                                   "#0x10",
                                   "#1a2",
                                   "1#2"}) {
        EXPECT_EQ(componentsOf(KvCVersion(text)), Components{}) << '"' << text << '"';
    }
}

TEST(VersionText, NullCountsAsTheEmptyText) {
    EXPECT_EQ(KvCVersion(nullptr), KvCVersion());
}

TEST(VersionNumber, HoldsTheComponentsFromTheMostSignificantOn) {
    EXPECT_EQ(KvCVersion(0x12, 0x34, 0x56, 0x78, 0x9ABC, 0xDEF0).getAsULong64(), 0x123456789ABCDEF0ULL);
    EXPECT_EQ(componentsOf(fromNumber(0x123456789ABCDEF0ULL)), (Components{0x12, 0x34, 0x56, 0x78, 0x9ABC, 0xDEF0}));
    EXPECT_EQ(KvCVersion().getAsULong64(), 0U);
}

TEST(VersionNumber, TheUnknownVersionKeepsItsNumber) {
    EXPECT_EQ(fromNumber(0xFFFFFFFE).getAsULong64(), 0xFFFFFFFEU);
}

TEST(VersionRoundTrip, TextAndNumberGiveEveryVersionBack) {
    for (const KvCVersion& version : sampleVersions(20000, 1)) {
        const KvCString text = version.getAsString();
        ASSERT_EQ(KvCVersion(text.c_str()), version) << text.c_str();
        ASSERT_EQ(fromNumber(version.getAsULong64()), version) << text.c_str();
        std::string byNumber(1, '#');
        byNumber += std::to_string(version.getAsULong64());
        ASSERT_EQ(KvCVersion(byNumber.c_str()), version) << byNumber;
    }
}

TEST(VersionOrder, GoesThroughAlphaBetaOtherBuildsAndRelease) {
    const KvCVersion ascending[] = {
        KvCVersion(),
        KvCVersion("0.0.0.0.1"),
        KvCVersion("0.0.1a0"),
        KvCVersion("23.1.9.9.9"),
        KvCVersion("23.2a0"),
        KvCVersion("23.2a11"),
        KvCVersion("23.2a12"),
        KvCVersion("23.2a12.1"),
        KvCVersion("23.2b1"),
        KvCVersion("23.2b1.65535"),
        KvCVersion("23.2b2"),
        KvCVersion(23, 2, 0, 3, 0, 0),
        KvCVersion(23, 2, 0, 3, 0, 1),
        KvCVersion(23, 2, 0, 4, 0, 0),
        KvCVersion(23, 2, 0, 255, 65535, 65535),
        KvCVersion("23.2"),
        KvCVersion("23.2.0.0.1"),
        KvCVersion("23.2.0.1"),
        KvCVersion("23.2.1a1"),
        KvCVersion("23.2.1"),
        KvCVersion("23.3a0"),
        KvCVersion("24.0a0"),
        KvCVersion("255.255.255.65535.65535"),
    };
    for (std::size_t left = 0; left < std::size(ascending); ++left) {
        for (std::size_t right = 0; right < std::size(ascending); ++right) {
            EXPECT_EQ(ascending[left] <=> ascending[right], left <=> right)
                << ascending[left].getAsString().c_str() << " and " << ascending[right].getAsString().c_str();
            EXPECT_EQ(ascending[left] == ascending[right], left == right);
        }
    }
}

TEST(VersionOrder, IsAStrictWeakOrder) {
    const std::vector<KvCVersion> versions = sampleVersions(160, 2);
    for (const KvCVersion& a : versions) {
        ASSERT_FALSE(a < a);
        for (const KvCVersion& b : versions) {
            ASSERT_EQ(a<b, b> a);
            ASSERT_EQ(a == b, !(a < b) && !(b < a));
            for (const KvCVersion& c : versions) {
                ASSERT_TRUE(!(a < b && b < c) || a < c);
            }
        }
    }
}

TEST(VersionOrder, AgreesWithTheComponentsComparedOneAfterTheOther) {
    const auto key = [](const KvCVersion& version) {
        Components components = componentsOf(version);
        components[3] = components[3] == 0 ? 256 : components[3];
        return components;
    };
    const std::vector<KvCVersion> versions = sampleVersions(600, 3);
    for (const KvCVersion& a : versions) {
        for (const KvCVersion& b : versions) {
            ASSERT_EQ(a < b, key(a) < key(b)) << a.getAsString().c_str() << " and " << b.getAsString().c_str();
        }
    }
}
