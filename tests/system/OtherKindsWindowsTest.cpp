#include "Files.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

namespace {

/// Names of devices, whatever the folder.
const wchar_t* const deviceNames[] = {L"NUL",  L"nul",      L"NUL.txt", L"NUL.",     L"NUL ",
                                      L"CON",  L"con.ini",  L"PRN",     L"AUX",      L"aux.ini",
                                      L"COM1", L"com9.kfw", L"LPT1",    L"lpt9.bin", L"Nul.a.b"};

/// Names that only look like such.
const char* const ordinaryNames[] = {"NULL",          "xNUL", "COM", "COM10",  "CONSOLE",
                                     "auxiliary.ini", "PR",   "LPT", "txt.NUL"};

TEST(DeviceNames, AreNeitherOpenedNorWaitedFor) {
    const ScratchFolder folder;
    for (const wchar_t* name : deviceNames) {
        for (const wchar_t* separator : {L"/", L"\\"}) {
            const std::wstring path = folder.path().wstring() + separator + name;
            SCOPED_TRACE(testing::PrintToString(path));
            EXPECT_EQ(openForReading(path), nullptr);
            EXPECT_EQ(sizeOfFileCreatedIfMissing(path), 0U);
            EXPECT_EQ(otherKindOf(path), "a device");
        }
    }
    EXPECT_TRUE(folder.list().empty());
}

TEST(DeviceNames, AloneAreDevicesToo) {
    for (const wchar_t* name : {L"NUL", L"CON", L"CONIN$", L"CONOUT$", L"COM1", LR"(\\.\NUL)", LR"(\\.\COM1)"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(name)));
        EXPECT_EQ(openForReading(name), nullptr);
        EXPECT_EQ(sizeOfFileCreatedIfMissing(name), 0U);
        EXPECT_EQ(otherKindOf(name), "a device");
    }
}

TEST(DeviceNames, AreNotThoseThatOnlyBeginOrEndSo) {
    const ScratchFolder folder;
    for (const char* name : ordinaryNames) {
        SCOPED_TRACE(name);
        static_cast<void>(folder.write(name, "12345"));
        const std::wstring path = (folder.path() / name).wstring();
        const FileStream file = openForReading(path);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(sizeOfOpenFile(*file), 5U);
        EXPECT_EQ(sizeOfFileCreatedIfMissing(path), 5U);
        EXPECT_EQ(otherKindOf(path), "");
    }
}

TEST(DeviceNames, AFolderIsCalledOne) {
    const ScratchFolder folder;
    EXPECT_EQ(openForReading(folder.path().wstring()), nullptr);
    EXPECT_EQ(otherKindOf(folder.path().wstring()), "a folder");
}

} // namespace
