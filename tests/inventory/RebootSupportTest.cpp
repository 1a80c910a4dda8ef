#include "InventoryFixture.h"

#include "KvCInventoryManager.h"
#include "KvEmulation.h"
#include "RebootSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t untouched = 77;

ItemBuilder firmware(std::string_view name, std::string_view version, std::uint32_t active = 1) {
    return item("UPDATE_ELEMENT")
        .parameter("NAME", name)
        .parameter("VERSION", version)
        .parameter("ACTIVE", std::uint64_t(active));
}

ItemBuilder host(std::string_view boardType) {
    return item("HCN").parameter("PRODUCT/BOARD_TYPE", boardType);
}

} // namespace

/// Judges the reboot support of an emulated target by its tree alone.
class RebootSupportTest : public InventoryTest {
protected:
    std::uint32_t status() { return statusOf(target); }
    /// Of a target that has this node first.
    static std::uint32_t statusOfNode(const ItemBuilder& node) {
        KvEmulation::reset();
        TargetBuilder one;
        one.add(node);
        return statusOf(one);
    }
    /// Of a rebootable target with one fault.
    static std::uint32_t statusWith(const FaultBuilder& fault) {
        TargetBuilder faulty;
        faulty.add(host("QB4120").element(firmware("Other", "1.0")).element(firmware("UserFirmware", "24.0")));
        faulty.add(fault);
        return statusOf(faulty);
    }

private:
    static std::uint32_t statusOf(TargetBuilder& served) {
        static_cast<void>(served.serve());
        KvCInventoryManager& manager = *KvCInventoryManager::getInstance();
        KvCInventoryRootHandle* root = nullptr;
        KvCInventoryItem* tree = nullptr;
        EXPECT_EQ(manager.createRootHandleByIpAddressList(errors(), "127.0.0.1", root), 0U);
        EXPECT_EQ(manager.scan(errors(), root, tree), 0U);
        std::uint32_t status = untouched;
        determineRebootSupport(errors(), *tree, status);
        manager.deleteInventoryTree(tree);
        EXPECT_EQ(manager.deleteRootHandle(errors(), root), 0U);
        return status;
    }
};

TEST_F(RebootSupportTest, TheFirmwareHasToReachTheMinimumOfItsBoard) {
    struct Row {
        const char* boardType;
        const char* version;
        std::uint32_t status;
    };
    constexpr std::array rows = {
        Row{"QB4120", "23.2a12", 0}, Row{"QB4120", "23.2a11", 2}, Row{"QB4120", "23.2a13", 0},
        Row{"QB4120", "23.2b1", 0},  Row{"QB4120", "23.2", 0},    Row{"QB4120", "23.1", 2},
        Row{"QB4120", "24.0a1", 0},  Row{"QB4120", "5.0", 2},     Row{"QB4120", "", 2},
        Row{"QB4140", "5.0", 0},     Row{"QB4140", "5.0b9", 2},   Row{"QB4140", "4.9.9", 2},
        Row{"QB4140", "5.0.0.1", 0}, Row{"QB4140", "23.2a11", 0}, Row{"QB4140", "0.0", 2},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(statusOfNode(host(row.boardType).element(firmware("UserFirmware", row.version))), row.status)
            << row.boardType << " " << row.version;
    }
}

TEST_F(RebootSupportTest, ATargetWithoutANodeCannotBeJudged) {
    EXPECT_EQ(status(), 4U);
}

TEST_F(RebootSupportTest, OnlyAHostComputingNodeComesFirst) {
    for (const char* const node : {"CN", "NETC", "IOROUTER", "IOMODULE", "BACKPLANE", "UPDATE_INFO"}) {
        EXPECT_EQ(statusOfNode(
                      item(node).parameter("PRODUCT/BOARD_TYPE", "QB4120").element(firmware("UserFirmware", "24.0"))),
                  3U)
            << node;
    }
}

TEST_F(RebootSupportTest, AHostThatComesSecondDoesNotCount) {
    target.add(item("IOMODULE")).add(host("QB4120").element(firmware("UserFirmware", "24.0")));
    EXPECT_EQ(status(), 3U);
}

TEST_F(RebootSupportTest, AnyInstanceOfTheHostCounts) {
    EXPECT_EQ(statusOfNode(host("QB4120").instance(9).element(firmware("UserFirmware", "24.0"))), 0U);
}

TEST_F(RebootSupportTest, WithoutABoardTypeItCannotBeJudged) {
    EXPECT_EQ(statusOfNode(item("HCN").element(firmware("UserFirmware", "24.0"))), 4U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(RebootSupportTest, WithoutAnUpdateInfoItCannotBeJudged) {
    EXPECT_EQ(statusOfNode(host("QB4120")), 4U);
    EXPECT_EQ(statusOfNode(host("QB4120").add(item("UPDATE_INFO").instance(2).add(firmware("UserFirmware", "24.0")))),
              4U);
    // Even of a board that has no reboot support anyway.
    EXPECT_EQ(statusOfNode(host("QB7001")), 4U);
}

TEST_F(RebootSupportTest, OtherBoardsDoNotSupportIt) {
    for (const char* const boardType : {"QB7001", "QB412", "QB4120 ", "qb4120", ""}) {
        EXPECT_EQ(statusOfNode(host(boardType).element(firmware("UserFirmware", "99.0"))), 3U) << boardType;
    }
}

TEST_F(RebootSupportTest, TheElementsOfOtherBoardsAreNotRead) {
    EXPECT_EQ(statusOfNode(host("QB7001").element(item("UPDATE_ELEMENT"))), 3U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(RebootSupportTest, WithoutFirmwareTheStatusIsLeftAlone) {
    EXPECT_EQ(statusOfNode(host("QB4120").add(item("UPDATE_INFO"))), untouched);
    EXPECT_EQ(statusOfNode(host("QB4140")
                               .element(firmware("CnFirmware", "99.0"))
                               .element(firmware("UserIpl", "99.0"))
                               .element(firmware("userfirmware", "99.0"))
                               .element(firmware("UserFirmware2", "99.0"))),
              untouched);
}

TEST_F(RebootSupportTest, InactiveFirmwareIsPassedOver) {
    EXPECT_EQ(statusOfNode(host("QB4140").element(firmware("UserFirmware", "99.0", 0))), untouched);
    EXPECT_EQ(
        statusOfNode(
            host("QB4140").element(firmware("UserFirmware", "99.0", 0)).element(firmware("FactoryFirmware", "4.0"))),
        2U);
}

TEST_F(RebootSupportTest, EveryActiveValueButZeroCounts) {
    for (const std::uint32_t active : {1U, 2U, 255U}) {
        EXPECT_EQ(statusOfNode(host("QB4140").element(firmware("UserFirmware", "5.0", active))), 0U) << active;
    }
}

TEST_F(RebootSupportTest, TheFirstActiveFirmwareDecides) {
    EXPECT_EQ(statusOfNode(host("QB4120")
                               .element(firmware("Other", "1.0"))
                               .element(firmware("FactoryFirmware", "23.2a11"))
                               .element(firmware("UserFirmware", "24.0"))),
              2U);
    EXPECT_EQ(statusOfNode(
                  host("QB4120").element(firmware("UserFirmware", "24.0")).element(firmware("FactoryFirmware", "1.0"))),
              0U);
}

TEST_F(RebootSupportTest, NothingIsReadAfterTheFirmware) {
    EXPECT_EQ(statusOfNode(host("QB4120").element(firmware("UserFirmware", "24.0")).element(item("UPDATE_ELEMENT"))),
              0U);
    EXPECT_THAT(takeErrors(), IsEmpty());
}

TEST_F(RebootSupportTest, AnyItemBelowTheUpdateInfoIsLookedAt) {
    EXPECT_EQ(statusOfNode(host("QB4140").element(item("FILESYSTEM_ELEMENT")
                                                      .parameter("NAME", "UserFirmware")
                                                      .parameter("ACTIVE", 1)
                                                      .parameter("VERSION", "6.0"))),
              0U);
}

TEST_F(RebootSupportTest, OnlyTheElementsOfTheHostItselfCount) {
    EXPECT_EQ(
        statusOfNode(host("QB4120").add(item("UPDATE_INFO")).add(item("CN").element(firmware("UserFirmware", "24.0")))),
        untouched);
}

TEST_F(RebootSupportTest, ABoardTypeThatCannotBeReadFailsTheCheck) {
    target.add(item("HCN").parameter("PRODUCT/BOARD_TYPE", 4120).element(firmware("UserFirmware", "24.0")));
    EXPECT_EQ(status(), 4U);
    EXPECT_THAT(takeErrors(), ElementsAre(unreadable("PRODUCT[1]/BOARD_TYPE[1]", "HCN[1]")));
}

TEST_F(RebootSupportTest, AMissingActiveFailsTheCheck) {
    target.add(host("QB4120")
                   .element(item("UPDATE_ELEMENT").parameter("NAME", "Other"))
                   .element(firmware("UserFirmware", "24.0")));
    EXPECT_EQ(status(), 4U);
    EXPECT_THAT(takeErrors(), ElementsAre(missing("ACTIVE[1]", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]")));
}

TEST_F(RebootSupportTest, AMissingNameFailsTheCheckOnlyOfAnActiveElement) {
    target.add(host("QB4120")
                   .element(item("UPDATE_ELEMENT").parameter("ACTIVE", 0))
                   .element(item("UPDATE_ELEMENT").parameter("ACTIVE", 1))
                   .element(firmware("UserFirmware", "24.0")));
    EXPECT_EQ(status(), 4U);
    EXPECT_THAT(takeErrors(), ElementsAre(missing("NAME[1]", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[2]")));
}

TEST_F(RebootSupportTest, AMissingVersionFailsTheCheck) {
    target.add(
        host("QB4120").element(item("UPDATE_ELEMENT").parameter("ACTIVE", 1).parameter("NAME", "FactoryFirmware")));
    EXPECT_EQ(status(), 4U);
    EXPECT_THAT(takeErrors(), ElementsAre(missing("VERSION[1]", "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]")));
}

TEST_F(RebootSupportTest, AFaultAtAnyReadFailsTheCheckAndLeavesItsError) {
    // Board type; activity and name of the first element; activity, name and version of the firmware.
    constexpr std::uint32_t reads = 6;
    for (std::uint32_t read = 1; read <= reads; ++read) {
        KvEmulation::reset();
        EXPECT_EQ(statusWith(fault("getValue").occurrence(read)), 4U) << "read " << read;
        EXPECT_THAT(takeErrors(), ElementsAre("Fault at getValue."));
    }
    KvEmulation::reset();
    EXPECT_EQ(statusWith(fault("getValue").occurrence(reads + 1)), 0U);
}

TEST_F(RebootSupportTest, AReadIsJudgedByItsErrorsAlone) {
    EXPECT_EQ(statusWith(fault("getValue").occurrence(6).noErrors()), 2U);
}

TEST_F(RebootSupportTest, ErrorsOfBeforeDoNotFailTheCheck) {
    errors().addError({});
    EXPECT_EQ(statusWith(fault("getValue").occurrence(100)), 0U);
    EXPECT_EQ(takeErrors().size(), 1U);
}

/// The status as a scan determines it.
using ScannedRebootSupportTest = InventoryTest;

TEST_F(ScannedRebootSupportTest, WithoutActiveFirmwareItStaysNotDetermined) {
    target.add(completeBoard("HCN", "QB4140", 1).element(completeElement(1, "UserFirmware").parameter("ACTIVE", 0)));
    scan();
    EXPECT_EQ(inventory->rebootSupportStatus(), 1U);
}

TEST_F(ScannedRebootSupportTest, FiltersDoNotMatter) {
    target.add(
        completeBoard("HCN", "QB4140", 1).element(completeElement(1, "UserFirmware").parameter("VERSION", "5.0")));
    options.boardTypeFilter = "none";
    options.configurationElements = true;
    scan();
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(inventory->rebootSupportStatus(), 0U);
}

TEST_F(ScannedRebootSupportTest, AnElementMayBeInactiveInTheListAndActiveHere) {
    target.add(completeBoard("HCN", "QB4140", 1)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "5.0").parameter("ACTIVE", 2)));
    options.verbose = true;
    scan();
    EXPECT_FALSE(element().active);
    EXPECT_EQ(inventory->rebootSupportStatus(), 0U);
    EXPECT_EQ(printed(), L"HCN found: HCN[1]\nReboot support status: 0\n");
}
