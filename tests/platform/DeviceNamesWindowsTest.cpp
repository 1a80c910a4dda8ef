// Names that this system takes for devices, where the emulation reads a file: nothing is opened.

#include "KvCInventoryData.h"
#include "TargetFixtures.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::EndsWith;

TEST_F(TargetFiles, LocalNamesOfDevicesAreNotWritten) {
    for (const wchar_t* name : {L"NUL", L"con", L"aux.ini", L"COM1", L"LPT1.txt"}) {
        const std::wstring local = files.path().wstring() + L"/" + name;
        SCOPED_TRACE(testing::PrintToString(local));
        EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, client, local.c_str(), top, "a", nullptr, nullptr), -1);
        EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("\": It is a device, not a regular file.")));
        EXPECT_FALSE(has("a"));
    }
}

TEST_F(TargetFiles, ADeviceHoldsNoInventoryTree) {
    for (const char* name : {"/NUL", "\\con", "/aux.ini", "/COM1", "/LPT1.txt"}) {
        const std::string path = files.text() + name;
        KvCInventoryItem* tree = nullptr;
        bool hasChecksum = false;
        std::uint32_t checksum = 0;
        KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), tree, hasChecksum, checksum);
        EXPECT_EQ(tree, nullptr);
        EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("\": It is a device, not a regular file."))) << path;
    }
}

} // namespace
