#include "PlanningTest.h"

#include "UpdateDecision.h"

#include <array>

using ElementRules = PlanningTest;

namespace {

constexpr std::uint32_t withQb5150 = 0x20100;
constexpr std::uint32_t withQb5170 = 0x30100;

struct CarrierRow {
    const char* situation;
    const char* boardType;
    std::uint32_t id;
    std::uint32_t software;
    bool lacksCarrier;
};

constexpr std::array carrierRows = {
    CarrierRow{"no carrier", "FPGA_TP1", 1, 0, true},
    CarrierRow{"first carrier", "FPGA_TP1", 1, withQb5150, false},
    CarrierRow{"second carrier", "FPGA_TP1", 1, withQb5170, false},
    CarrierRow{"less than the first carrier", "FPGA_TP1", 1, withQb5150 - 1, true},
    CarrierRow{"between the carriers", "FPGA_TP1", 1, withQb5150 + 1, true},
    CarrierRow{"more than the second carrier", "FPGA_TP1", 1, withQb5170 + 1, true},
    CarrierRow{"bits of a carrier", "FPGA_TP1", 1, 0x120100, true},
    CarrierRow{"element 0", "FPGA_TP1", 0, 0, false},
    CarrierRow{"element 2", "FPGA_TP1", 2, 0, false},
    CarrierRow{"another FPGA", "FPGA_TP2", 1, 0, false},
    CarrierRow{"longer type", "FPGA_TP11", 1, 0, false},
    CarrierRow{"type in lower case", "fpga_tp1", 1, 0, false},
    CarrierRow{"no type", "", 1, 0, false},
};

} // namespace

TEST_F(ElementRules, AnUnmatchedFpgaElementWithoutItsCarrierIsDisabled) {
    for (const CarrierRow& row : carrierRows) {
        forgetTarget();
        targetHas(element(row.boardType, row.id).software(row.software));
        EXPECT_EQ(row.lacksCarrier, lacksCarrierBoard(elementAt(0))) << row.situation;
        plan();
        EXPECT_EQ(row.lacksCarrier, elementAt(0).disabled) << row.situation;
        EXPECT_EQ(noArchiveFile, elementAt(0).archiveFileIndex) << row.situation;
        EXPECT_FALSE(elementAt(0).upToDate) << row.situation;
    }
}

TEST_F(ElementRules, AnFpgaElementThatAnEntryClaimsIsNeverDisabled) {
    archiveHas({"'boardType': 'FPGA_TP1', 'id': 1, 'boardId': 2"});
    targetHas(element("FPGA_TP1", 1).boardId(2));
    plan();
    EXPECT_FALSE(elementAt(0).disabled);
}

TEST_F(ElementRules, OtherPropertiesDoNotKeepTheElementEnabled) {
    targetHas(element("FPGA_TP1", 1).invalid().inactive().variant("V").boardId(1).hardware(withQb5150).checksum(1));
    plan();
    EXPECT_TRUE(elementAt(0).disabled);
}
