#include "ElementNames.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

struct Names {
    KvCString typeName = "left over";
    KvCString displayName = "left over";
};

Names namesOf(const char* boardName, const char* boardType, std::uint32_t serialNumber, const char* elementName) {
    Names names;
    makeElementNames(boardName, boardType, serialNumber, elementName, names.typeName, names.displayName);
    return names;
}

struct TypeNameCase {
    const char* elementName;
    const char* typeName;
};

constexpr std::array typeNameCases = {
    TypeNameCase{"UserFirmware", "Firmware"},
    TypeNameCase{"CnFirmware", "Firmware"},
    TypeNameCase{"HypervisorFirmware", "Hypervisor"},
    TypeNameCase{"UserFpga", "FPGA"},
    TypeNameCase{"IoFpga", "FPGA"},
    TypeNameCase{"UserIpl", "Bootloader"},
    TypeNameCase{"CnIpl", "Bootloader"},
    TypeNameCase{"UserCpld", "CPLD"},
    TypeNameCase{"IoCpld", "CPLD"},
    // Only "IoFpga" may be followed by more.
    TypeNameCase{"IoFpgaX", "FPGA"},
    TypeNameCase{"IoFpga2", "FPGA"},
    TypeNameCase{"IoFpga ", "FPGA"},
    TypeNameCase{"IoFpg", "IoFpg"},
    TypeNameCase{"MyIoFpga", "MyIoFpga"},
    TypeNameCase{"UserFpga2", "UserFpga2"},
    TypeNameCase{"IoCpld2", "IoCpld2"},
    TypeNameCase{"UserCpld2", "UserCpld2"},
    TypeNameCase{"UserIpl2", "UserIpl2"},
    TypeNameCase{"CnIpl2", "CnIpl2"},
    TypeNameCase{"UserFirmware2", "UserFirmware2"},
    TypeNameCase{"CnFirmware ", "CnFirmware "},
    TypeNameCase{"HypervisorFirmware2", "HypervisorFirmware2"},
    // Names that only look alike.
    TypeNameCase{"userfirmware", "userfirmware"},
    TypeNameCase{"USERFPGA", "USERFPGA"},
    TypeNameCase{"iofpga", "iofpga"},
    TypeNameCase{"UserFirmwar", "UserFirmwar"},
    TypeNameCase{" UserFirmware", " UserFirmware"},
    TypeNameCase{"FactoryFirmware", "FactoryFirmware"},
    TypeNameCase{"CnFpga", "CnFpga"},
    TypeNameCase{"CnCpld", "CnCpld"},
    TypeNameCase{"IoIpl", "IoIpl"},
    TypeNameCase{"IoFirmware", "IoFirmware"},
    TypeNameCase{"Updatable file", "Updatable file"},
    TypeNameCase{"Gr\xC3\xB6\xC3\x9F"
                 "e",
                 "Gr\xC3\xB6\xC3\x9F"
                 "e"},
    TypeNameCase{"", ""},
};

struct DisplayNameCase {
    const char* boardName;
    const char* boardType;
    std::uint32_t serialNumber;
    const char* elementName;
    const char* displayName;
};

constexpr std::array displayNameCases = {
    DisplayNameCase{"QB4120 (A)", "QB4120", 2815, "UserFirmware", "QB4120 (A), SN 2815, Firmware"},
    DisplayNameCase{"", "QB4120", 2815, "UserFirmware", "QB4120, SN 2815, Firmware"},
    DisplayNameCase{"Main processor", "QB4120", 1, "UserIpl", "Main processor, SN 1, Bootloader"},
    // A serial number of 0 is not shown.
    DisplayNameCase{"QB4120", "QB4120", 0, "UserFirmware", "QB4120, Firmware"},
    DisplayNameCase{"", "", 0, "UserFirmware", ", Firmware"},
    DisplayNameCase{"", "", 7, "UserFirmware", ", SN 7, Firmware"},
    DisplayNameCase{"", "", 0, "", ", "},
    // The upper eight bits are a sub-number.
    DisplayNameCase{"", "QB7001", 0x02003039, "IoFpga", "QB7001, SN 12345(2), FPGA"},
    DisplayNameCase{"", "QB7001", 0x00FFFFFF, "IoFpga", "QB7001, SN 16777215, FPGA"},
    DisplayNameCase{"", "QB7001", 0x01000000, "IoFpga", "QB7001, SN 0(1), FPGA"},
    DisplayNameCase{"", "QB7001", 0x80000001, "IoFpga", "QB7001, SN 1(128), FPGA"},
    DisplayNameCase{"", "QB7001", 0xFFFFFFFF, "IoFpga", "QB7001, SN 16777215(255), FPGA"},
    // The type name, not the element's own name, ends the text.
    DisplayNameCase{"", "QB7001", 5, "FactoryFirmware", "QB7001, SN 5, FactoryFirmware"},
    DisplayNameCase{"B", "", 5, "IoCpld2", "B, SN 5, IoCpld2"},
};

} // namespace

TEST(ElementNames, TheElementNameDecidesTheTypeName) {
    for (const TypeNameCase& row : typeNameCases) {
        EXPECT_EQ(namesOf("Board", "QB4120", 0, row.elementName).typeName.view(), row.typeName)
            << "element name " << row.elementName;
    }
}

TEST(ElementNames, TheDisplayNameIsBoardSerialNumberAndTypeName) {
    for (const DisplayNameCase& row : displayNameCases) {
        EXPECT_EQ(namesOf(row.boardName, row.boardType, row.serialNumber, row.elementName).displayName.view(),
                  row.displayName);
    }
}

TEST(ElementNames, AByteZeroBelongsToTheName) {
    using namespace std::string_view_literals;
    KvCString typeName;
    KvCString displayName;
    makeElementNames("B", "", 0, KvCString("UserFirmware\0"sv), typeName, displayName);
    EXPECT_EQ(typeName.view(), "UserFirmware\0"sv);
}

TEST(ElementNames, ResultsMayReplaceTheirOwnInputs) {
    KvCString elementName("IoFpga1");
    KvCString boardName("QB7001");
    makeElementNames(boardName, "QB", 3, elementName, elementName, boardName);
    EXPECT_EQ(elementName, "FPGA");
    EXPECT_EQ(boardName, "QB7001, SN 3, FPGA");
}
