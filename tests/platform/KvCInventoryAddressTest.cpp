#include "KvCInventoryAddress.h"

#include "KvNInventoryIDs.h"

#include <gtest/gtest.h>

using namespace KvNInventoryIDs;

TEST(InventoryAddress, AnAddressOfNothingIsEmpty) {
    const KvCInventoryAddress address;
    EXPECT_TRUE(address.isEmpty());
    EXPECT_EQ(address.getCategory(), 0U);
    EXPECT_TRUE(address.getLastElement().isEmpty());
    EXPECT_TRUE(address[3].isEmpty());
    EXPECT_TRUE(address.toString() == "");
}

TEST(InventoryAddress, AConstantMeansItsFirstInstance) {
    EXPECT_EQ(HCN, HCN[1]);
    EXPECT_NE(HCN, HCN[2]);
    EXPECT_NE(HCN, CN);
}

TEST(InventoryAddress, TheCategoryIsTheLastIdentifier) {
    EXPECT_EQ((HCN / UPDATE_INFO / UPDATE_ELEMENT[2]).getCategory(), UPDATE_ELEMENT.getCategory());
}

TEST(InventoryAddress, ABracketCountsForTheLastComponentOnly) {
    EXPECT_EQ((NETWORK / ION)[3], NETWORK[1] / ION[3]);
    EXPECT_NE((NETWORK / ION)[3], NETWORK[3] / ION[1]);
}

TEST(InventoryAddress, TheLastElementStandsForItself) {
    EXPECT_EQ((NETWORK[2] / ION[3]).getLastElement(), ION[3]);
}

TEST(InventoryAddress, JoinsAtEitherEndOfNothing) {
    const KvCInventoryAddress nothing;
    EXPECT_EQ(nothing / HCN, HCN);
    EXPECT_EQ(HCN / nothing, HCN);
}

TEST(InventoryAddress, JoiningLeavesTheOperandsAsTheyWere) {
    const KvCInventoryAddress above = HCN;
    const KvCInventoryAddress joined = above / UPDATE_INFO;
    EXPECT_EQ(above, HCN);
    EXPECT_EQ(joined.getComponents().size(), 2U);
}

struct AddressText {
    KvCInventoryAddress address;
    const char* text = nullptr;
};

TEST(InventoryAddress, PrintsEveryComponentWithItsInstance) {
    const AddressText cases[] = {
        {ROOT, "ROOT[1]"},
        {HCN, "HCN[1]"},
        {HCN / UPDATE_INFO / UPDATE_ELEMENT[2], "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]"},
        {NETC[2] / NETWORK / ION[4000000000U], "NETC[2]/NETWORK[1]/ION[4000000000]"},
        {PRODUCT / BOARD_TYPE, "PRODUCT[1]/BOARD_TYPE[1]"},
        {KvCInventoryAddress(4711, 3), "4711[3]"},
    };
    for (const AddressText& expected : cases) {
        EXPECT_STREQ(expected.address.toString().c_str(), expected.text);
    }
}
