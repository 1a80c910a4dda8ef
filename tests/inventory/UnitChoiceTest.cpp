#include "InventoryFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

namespace {

using testing::Contains;
using testing::ElementsAre;

/// An item whose product has a unit name.
ItemBuilder namedUnit(std::string_view identifier, std::string_view unitName) {
    return item(identifier).parameter("PRODUCT/UNITNAME", unitName);
}

} // namespace

using UnitChoiceTest = InventoryTest;

TEST_F(UnitChoiceTest, TheBackplaneBelowTheComputingNodeIsTheUnitOfTheWholeHost) {
    target.add(carrier("HCN", "h")
                   .add(carrier("CN", "c").add(
                       namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i")).add(carrier("FBMODULE", "f")))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in Rack", "c in Rack", "i in Rack", "f in Rack"));
}

TEST_F(UnitChoiceTest, WithoutAComputingNodeTheHostsOwnBackplaneIsTheUnit) {
    target.add(carrier("HCN", "h").add(namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in Rack", "i in Rack"));
}

TEST_F(UnitChoiceTest, AHostWithAComputingNodeDoesNotLookAtItsOwnBackplane) {
    target.add(
        carrier("HCN", "h").add(namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i"))).add(carrier("CN", "c")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in ", "c in ", "i in Rack"));
}

TEST_F(UnitChoiceTest, OnlyTheFirstComputingNodeCounts) {
    target.add(carrier("HCN", "h").add(carrier("CN", "c")).add(carrier("CN", "d").add(namedUnit("BACKPLANE", "Rack"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in ", "c in ", "d in "));
}

TEST_F(UnitChoiceTest, OnlyTheFirstBackplaneCounts) {
    target.add(carrier("HCN", "h")
                   .add(carrier("BACKPLANE", "b"))
                   .add(namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in ", "b in ", "i in Rack"));
}

TEST_F(UnitChoiceTest, AnyInstanceOfABackplaneAndANodeCounts) {
    target.add(carrier("HCN", "h")
                   .instance(3)
                   .add(carrier("CN", "c").instance(2).add(namedUnit("BACKPLANE", "Rack").instance(7))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in Rack", "c in Rack"));
}

TEST_F(UnitChoiceTest, ABackplaneWithAPackageNameOnlyIsNotTheUnitOfTheHost) {
    target.add(carrier("HCN", "h")
                   .add(item("BACKPLANE").parameter("PRODUCT/PACKAGE_NAME", "Package").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in ", "i in Package"));
}

TEST_F(UnitChoiceTest, ABackplaneWithABareUnitNameIsNoUnit) {
    target.add(carrier("HCN", "h").add(item("BACKPLANE").parameter("UNITNAME", "Bare").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in ", "i in "));
}

TEST_F(UnitChoiceTest, TheBackplaneOfAnIoRouterIsItsUnit) {
    target.add(carrier("IOROUTER", "r").add(namedUnit("BACKPLANE", "Remote").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("r in Remote", "i in Remote"));
}

TEST_F(UnitChoiceTest, AnIoRouterDoesNotLookBelowAComputingNode) {
    target.add(carrier("IOROUTER", "r").add(carrier("CN", "c").add(namedUnit("BACKPLANE", "Remote"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("r in ", "c in "));
}

TEST_F(UnitChoiceTest, ABackplaneDeeperBelowIsNotLookedFor) {
    target.add(carrier("IOROUTER", "r")
                   .add(item("NETWORK").add(namedUnit("BACKPLANE", "Remote").add(carrier("IOMODULE", "i")))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("r in ", "i in Remote"));
}

TEST_F(UnitChoiceTest, OtherItemsDoNotLookForABackplane) {
    target.add(carrier("CN", "c").add(namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i"))))
        .add(carrier("NETC", "n").add(namedUnit("BACKPLANE", "Other")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("c in ", "n in ", "i in Rack"));
}

TEST_F(UnitChoiceTest, AnItemWithAUnitNameIsAUnitWhateverItIs) {
    target.add(carrier("IOMODULE", "i").parameter("PRODUCT/UNITNAME", "Module"))
        .add(namedUnit("NETWORK", "Net").add(carrier("ION", "n")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("i in Module", "n in Net"));
}

TEST_F(UnitChoiceTest, AnItemWithAPackageNameIsAUnit) {
    target.add(carrier("IOMODULE", "i").parameter("PRODUCT/PACKAGE_NAME", "Package"));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("i in Package"));
}

TEST_F(UnitChoiceTest, TheUnitNameComesBeforeThePackageName) {
    target.add(
        carrier("IOMODULE", "i").parameter("PRODUCT/PACKAGE_NAME", "Package").parameter("PRODUCT/UNITNAME", "Unit"));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("i in Unit"));
}

TEST_F(UnitChoiceTest, AnEmptyUnitNameMakesAUnitToo) {
    target.add(item("BACKPLANE")
                   .parameter("PRODUCT/UNITNAME", "Outer")
                   .add(carrier("IOMODULE", "i").parameter("PRODUCT/UNITNAME", "").parameter("UNITNAME", "own")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("i in "));
    EXPECT_EQ(element().unitInstanceName, "own");
}

TEST_F(UnitChoiceTest, ANameOfItsOwnComesBeforeTheBackplane) {
    target.add(carrier("HCN", "h")
                   .parameter("PRODUCT/UNITNAME", "Host")
                   .add(namedUnit("BACKPLANE", "Rack").add(carrier("IOMODULE", "i"))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("h in Host", "i in Rack"));
}

TEST_F(UnitChoiceTest, AUnitIsInheritedUntilAnotherOneBegins) {
    target.add(namedUnit("BACKPLANE", "Outer")
                   .add(carrier("IOMODULE", "a").add(item("SUB_BOARDS").add(carrier("PIGGYBACK_MODULE", "p"))))
                   .add(namedUnit("NETWORK", "Inner").add(carrier("IOMODULE", "b")))
                   .add(carrier("IOMODULE", "c")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("a in Outer", "p in Outer", "c in Outer", "b in Inner"));
}

TEST_F(UnitChoiceTest, AnIoRouterWithoutABackplaneOfItsOwnStaysInTheUnitAround) {
    target.add(namedUnit("BACKPLANE", "Rack")
                   .add(carrier("IOROUTER", "r").add(item("BACKPLANE").add(carrier("IOMODULE", "i")))));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("r in Rack", "i in Rack"));
}

TEST_F(UnitChoiceTest, AUnitNameThatCannotBeReadStaysEmpty) {
    target.add(carrier("IOMODULE", "i").parameter("PRODUCT/UNITNAME", 5).parameter("PRODUCT/PACKAGE_NAME", "Package"));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("i in "));
    EXPECT_THAT(takeErrors(), ElementsAre(unreadable("PRODUCT[1]/UNITNAME[1]", "IOMODULE[1]")));
}

/// The names of a unit beside its unit name.
using UnitNamingTest = InventoryTest;

TEST_F(UnitNamingTest, WithoutAUnitThereAreNoNames) {
    target.add(carrier("IOMODULE", "i").parameter("UNITNAME", "own").parameter("RACKNAME", "rack"));
    scan();
    EXPECT_EQ(element().unitName, "");
    EXPECT_EQ(element().unitInstanceName, "");
    EXPECT_EQ(element().rackName, "");
}

TEST_F(UnitNamingTest, InstanceAndRackNameAreReadOnTheUnit) {
    target.add(namedUnit("BACKPLANE", "Rack")
                   .parameter("UNITNAME", "first")
                   .parameter("RACKNAME", "R7")
                   .add(carrier("IOMODULE", "i").parameter("UNITNAME", "of the board")));
    scan();
    EXPECT_EQ(element().unitName, "Rack");
    EXPECT_EQ(element().unitInstanceName, "first");
    EXPECT_EQ(element().rackName, "R7");
}

TEST_F(UnitNamingTest, EachNameMayBeMissing) {
    target.add(carrier("IOMODULE", "a").parameter("PRODUCT/UNITNAME", "A").parameter("UNITNAME", "u"))
        .add(carrier("IOMODULE", "b").parameter("PRODUCT/UNITNAME", "B").parameter("RACKNAME", "r"))
        .add(carrier("IOMODULE", "c").parameter("PRODUCT/UNITNAME", "C"));
    scan();
    EXPECT_EQ(element(0).unitInstanceName, "u");
    EXPECT_EQ(element(0).rackName, "");
    EXPECT_EQ(element(1).unitInstanceName, "");
    EXPECT_EQ(element(1).rackName, "r");
    EXPECT_EQ(element(2).unitInstanceName, "");
    EXPECT_EQ(element(2).rackName, "");
}

class RouterNamingTest : public InventoryTest {
protected:
    /// An I/O router that is a unit and has the I/O nodes 12345 and 7.
    static ItemBuilder router(std::uint32_t serialNumber) {
        return completeBoard("IOROUTER", "QB1000", serialNumber)
            .element(completeElement(1, "r"))
            .parameter("PRODUCT/UNITNAME", "Router")
            .parameter("RACKNAME", "router rack")
            .add(item("NETWORK")
                     .add(item("ION").instance(7).parameter("UNITNAME", "seven").parameter("RACKNAME", "R7"))
                     .add(item("ION").instance(12345).parameter("UNITNAME", "node").parameter("RACKNAME", "R1")));
    }
};

TEST_F(RouterNamingTest, AnIoRouterIsNamedByTheIoNodeOfItsSerialNumber) {
    target.add(router(12345));
    scan();
    EXPECT_EQ(element().unitName, "Router");
    EXPECT_EQ(element().unitInstanceName, "node");
    EXPECT_EQ(element().rackName, "R1");
}

TEST_F(RouterNamingTest, TheSubNumberOfTheSerialNumberDoesNotCount) {
    target.add(router(0x02000000 + 12345));
    scan();
    EXPECT_EQ(element().unitInstanceName, "node");
    EXPECT_EQ(element().serialNumber, 0x02000000U + 12345U);
}

TEST_F(RouterNamingTest, AnyInstanceOfAnIoRouterLooksForItsNode) {
    target.add(router(7).instance(3));
    scan();
    EXPECT_EQ(element().unitInstanceName, "seven");
    EXPECT_EQ(element().rackName, "R7");
}

TEST_F(RouterNamingTest, WithoutSuchANodeTheRouterNamesItself) {
    target.add(router(8));
    scan();
    EXPECT_EQ(element().unitInstanceName, "");
    EXPECT_EQ(element().rackName, "router rack");
}

TEST_F(RouterNamingTest, WithoutASerialNumberTheRouterNamesItself) {
    target.add(item("IOROUTER")
                   .element(completeElement(1, "r"))
                   .parameter("PRODUCT/UNITNAME", "Router")
                   .parameter("RACKNAME", "router rack")
                   .add(item("NETWORK").add(item("ION").parameter("UNITNAME", "one").parameter("RACKNAME", "R1"))));
    scan();
    EXPECT_EQ(element().unitInstanceName, "");
    EXPECT_EQ(element().rackName, "router rack");
    EXPECT_THAT(takeErrors(), Contains(missing("PRODUCT[1]/SERIAL_NUMBER[1]", "IOROUTER[1]")));
}

TEST_F(RouterNamingTest, ARouterWithAUnitNameNamesItself) {
    target.add(router(12345).parameter("UNITNAME", "own"));
    scan();
    EXPECT_EQ(element().unitInstanceName, "own");
    EXPECT_EQ(element().rackName, "router rack");
}

TEST_F(RouterNamingTest, AnEmptyUnitNameOfTheRouterIsOneToo) {
    target.add(router(12345).parameter("UNITNAME", ""));
    scan();
    EXPECT_EQ(element().unitInstanceName, "");
    EXPECT_EQ(element().rackName, "router rack");
}

TEST_F(RouterNamingTest, ANodeWithoutNamesGivesNone) {
    target.add(router(9).add(item("NETWORK").instance(2).add(item("ION").instance(9).parameter("UNITNAME", "other"))));
    target.add(completeBoard("IOROUTER", "QB1000", 3)
                   .element(completeElement(1, "s"))
                   .parameter("PRODUCT/UNITNAME", "Second")
                   .parameter("RACKNAME", "own rack")
                   .add(item("NETWORK").add(item("ION").instance(3))));
    scan();
    // The first one's node is in another network than the first; the second one's node has no names.
    EXPECT_EQ(element(0).rackName, "router rack");
    EXPECT_EQ(element(0).unitInstanceName, "");
    EXPECT_EQ(element(1).rackName, "");
    EXPECT_EQ(element(1).unitInstanceName, "");
}

TEST_F(RouterNamingTest, OtherUnitsDoNotLookForANode) {
    target.add(completeBoard("IOMODULE", "QB1000", 12345)
                   .element(completeElement(1, "i"))
                   .parameter("PRODUCT/UNITNAME", "Module")
                   .add(item("NETWORK").add(item("ION").instance(12345).parameter("UNITNAME", "node"))));
    scan();
    EXPECT_EQ(element().unitInstanceName, "");
}

TEST_F(RouterNamingTest, ARouterWithoutASerialNumberReportsItForEveryElementAndNamesItself) {
    target.add(item("IOROUTER")
                   .parameter("PRODUCT/UNITNAME", "Router")
                   .parameter("RACKNAME", "router rack")
                   .add(carrier("IOMODULE", "a"))
                   .add(carrier("IOMODULE", "b")));
    scan();
    EXPECT_EQ(element(0).rackName, "router rack");
    EXPECT_EQ(element(1).rackName, "router rack");
    const std::string error = missing("PRODUCT[1]/SERIAL_NUMBER[1]", "IOROUTER[1]");
    EXPECT_THAT(takeErrors(), ElementsAre(error, error));
}

TEST_F(RouterNamingTest, TheBackplaneOfARouterIsNotARouter) {
    target.add(completeBoard("IOROUTER", "QB1000", 7)
                   .element(completeElement(1, "r"))
                   .add(namedUnit("BACKPLANE", "Remote"))
                   .add(item("NETWORK").add(item("ION").instance(7).parameter("UNITNAME", "seven"))));
    scan();
    EXPECT_EQ(element().unitName, "Remote");
    EXPECT_EQ(element().unitInstanceName, "");
}
