#include "InventoryNames.h"

#include "KvCInventoryAddress.h"
#include "KvNInventoryIDs.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace KvNInventoryIDs;

namespace {

struct Named {
    KvCInventoryAddress address;
    std::string_view name;
};

const Named items[] = {
    {ROOT, "ROOT"},
    {HCN, "HCN"},
    {CN, "CN"},
    {NETC, "NETC"},
    {BACKPLANE, "BACKPLANE"},
    {NETWORK, "NETWORK"},
    {IOROUTER, "IOROUTER"},
    {ION, "ION"},
    {IOMODULE, "IOMODULE"},
    {PIGGYBACK_MODULE, "PIGGYBACK_MODULE"},
    {SUB_BOARDS, "SUB_BOARDS"},
    {FBMODULE, "FBMODULE"},
    {UPDATE_INFO, "UPDATE_INFO"},
    {UPDATE_ELEMENT, "UPDATE_ELEMENT"},
    {FILESYSTEM_ELEMENT, "FILESYSTEM_ELEMENT"},
    {FIRMWARE, "FIRMWARE"},
};

const Named parameters[] = {
    {BOARD_TYPE, "BOARD_TYPE"},
    {VARIANT, "VARIANT"},
    {ID, "ID"},
    {HW_TYPE, "HW_TYPE"},
    {SERIAL_NUMBER, "SERIAL_NUMBER"},
    {SLOT_COUNT, "SLOT_COUNT"},
    {NAME, "NAME"},
    {UNITNAME, "UNITNAME"},
    {PACKAGE_NAME, "PACKAGE_NAME"},
    {SLOT, "SLOT"},
    {RACKNAME, "RACKNAME"},
    {CONFIGURATION, "CONFIGURATION"},
    {LOCATION, "LOCATION"},
    {HW_COMPATIBILITY_ID, "HW_COMPATIBILITY_ID"},
    {SW_COMPATIBILITY_ID, "SW_COMPATIBILITY_ID"},
    {TYPE_ID, "TYPE_ID"},
    {CUSTOM, "CUSTOM"},
    {VALID, "VALID"},
    {ACTIVE, "ACTIVE"},
    {CHECKSUM_CRC32, "CHECKSUM_CRC32"},
    {VERSION, "VERSION"},
    {VERSION_HISTORY, "VERSION_HISTORY"},
    {MIN_HW_COMPATIBILITY_ID, "MIN_HW_COMPATIBILITY_ID"},
    {MAX_HW_COMPATIBILITY_ID, "MAX_HW_COMPATIBILITY_ID"},
    {MIN_SW_COMPATIBILITY_ID, "MIN_SW_COMPATIBILITY_ID"},
    {MAX_SW_COMPATIBILITY_ID, "MAX_SW_COMPATIBILITY_ID"},
};

/// The address whose path is `path`; empty when there is none.
KvCInventoryAddress addressAt(std::string_view path) {
    const auto found = InventoryNames::parameterPath(path);
    if (!found) {
        return {};
    }
    const KvCInventoryAddress parameter(found->parameter);
    return found->group != 0 ? KvCInventoryAddress(found->group) / parameter : parameter;
}

} // namespace

TEST(InventoryNames, EveryItemHasTheNameOfItsConstant) {
    for (const Named& item : items) {
        EXPECT_EQ(InventoryNames::nameOf(item.address.getCategory()), item.name);
        EXPECT_EQ(InventoryNames::itemIdentifier(item.name), item.address.getCategory()) << item.name;
    }
}

TEST(InventoryNames, EveryParameterHasTheNameOfItsConstant) {
    for (const Named& parameter : parameters) {
        EXPECT_EQ(InventoryNames::nameOf(parameter.address.getCategory()), parameter.name);
        EXPECT_EQ(addressAt(parameter.name), parameter.address) << parameter.name;
    }
}

TEST(InventoryNames, EveryParameterCanStandInTheProductGroup) {
    EXPECT_EQ(InventoryNames::nameOf(PRODUCT.getCategory()), "PRODUCT");
    for (const Named& parameter : parameters) {
        std::string path = "PRODUCT/";
        path += parameter.name;
        EXPECT_EQ(addressAt(path), PRODUCT / parameter.address) << path;
    }
}

TEST(InventoryNames, AnIdentifierWithoutANameGivesNone) {
    for (const std::uint32_t identifier : {0U, 17U, 100U, 128U, 4294967295U}) {
        EXPECT_EQ(InventoryNames::nameOf(identifier), "") << identifier;
    }
}

TEST(InventoryNames, WhatIsNoItemHasNoItemIdentifier) {
    for (const char* const name : {"", "hcn", "HCN ", "HCN[1]", "PRODUCT", "VERSION", "SUPERBOARD"}) {
        EXPECT_FALSE(InventoryNames::itemIdentifier(name)) << name;
    }
}

TEST(InventoryNames, WhatIsNoParameterPathHasNoIdentifiers) {
    for (const char* const path :
         {"", "/", "PRODUCT", "PRODUCT/", "/SLOT", "PRODUCT/PRODUCT", "PRODUCT/HCN", "PRODUCT/SLOT/", "HCN/SLOT",
          "PRODUCT//SLOT", "PRODUCT/PRODUCT/SLOT", "SLOT/SLOT", "HCN", "slot", "product/SLOT", " SLOT"}) {
        EXPECT_FALSE(InventoryNames::parameterPath(path)) << path;
    }
}
