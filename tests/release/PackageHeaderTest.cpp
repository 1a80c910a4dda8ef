#include "PackageHeader.h"

#include <gtest/gtest.h>

namespace {

const KvTPackedFile packed{"sub/firmware.kfw", 12345, std::chrono::sys_seconds(std::chrono::seconds(1790000000))};

TEST(PackageHeader, IsThatOfAUstarArchive) {
    const KvTPackageHeader header = headerOf(packed);
    const std::string text(header.begin(), header.end());
    EXPECT_EQ(text.substr(0, 17), std::string("sub/firmware.kfw\0", 17));
    EXPECT_EQ(text.substr(100, 24), std::string("0000644\0000000000\0000000000\0", 24));
    EXPECT_EQ(text.substr(124, 12), std::string("00000030071\0", 12));
    EXPECT_EQ(text.substr(136, 12), std::string("15254235600\0", 12));
    EXPECT_EQ(text[156], '0');
    EXPECT_EQ(text.substr(257, 8), std::string("ustar\00000", 8));
    unsigned sum = 8 * ' ';
    for (std::size_t index = 0; index < text.size(); ++index) {
        sum += index >= 148 && index < 156 ? 0U : static_cast<unsigned char>(text[index]);
    }
    EXPECT_EQ(std::stoul(text.substr(148, 6), nullptr, 8), sum);
    EXPECT_EQ(text.substr(154, 2), std::string("\0 ", 2));
}

TEST(PackageHeader, SaysWhatItWasMadeOf) {
    const std::string longest(100, 'x');
    for (const KvTPackedFile& made :
         {packed, KvTPackedFile{longest, 0, {}}, KvTPackedFile{"a", (std::uint64_t{8} << 30U) - 1, packed.time}}) {
        const std::optional<KvTPackedFile> read = readHeader(headerOf(made));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->name, made.name);
        EXPECT_EQ(read->size, made.size);
        EXPECT_EQ(read->time, made.time);
    }
}

TEST(PackageHeader, CanBeWrittenInOneWayOnly) {
    const KvTPackageHeader header = headerOf(packed);
    for (std::size_t index = 0; index < header.size(); ++index) {
        for (unsigned change = 1; change < 256; ++change) {
            KvTPackageHeader changed = header;
            changed[index] = static_cast<char>(static_cast<unsigned char>(changed[index]) ^ change);
            ASSERT_FALSE(readHeader(changed)) << index << " changed by " << change;
        }
    }
    EXPECT_FALSE(readHeader({}));
}

TEST(PackageHeader, FilesEndAtWholeBlocks) {
    EXPECT_EQ(paddingOf(0), 0U);
    EXPECT_EQ(paddingOf(1), 511U);
    EXPECT_EQ(paddingOf(511), 1U);
    EXPECT_EQ(paddingOf(512), 0U);
    EXPECT_EQ(paddingOf(513), 511U);
}

} // namespace
