#include "InventoryFixture.h"

#include <gmock/gmock.h>

#include <ostream>

using KvNReflasher::KvEHiddenBy;
using KvNReflasher::KvTHiddenElement;
using KvNReflasher::KvTOptions;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr auto byType = KvEHiddenBy::boardTypeFilter;
constexpr auto byNumber = KvEHiddenBy::serialNumberFilter;
constexpr auto byName = KvEHiddenBy::elementNameFilter;
constexpr auto byKind = KvEHiddenBy::configuration;

/// The filters of a session and what they hide: "NAME" of an element and the reasons.
struct HiddenRow {
    const char* name;
    const char* boardType;
    const char* serialNumber;
    const char* elementName;
    bool configuration;
    std::vector<std::pair<std::string, std::vector<KvEHiddenBy>>> hidden;

    friend void PrintTo(const HiddenRow& row, std::ostream* stream) { *stream << row.name; }
};

class HiddenElements : public InventoryTest {
protected:
    void SetUp() override {
        InventoryTest::SetUp();
        target.add(completeBoard("HCN", "NODE", 7)
                       .element(completeElement(1, "One"))
                       .element(completeElement(2, "Two").parameter("CONFIGURATION", std::uint64_t(1))));
        target.add(completeBoard("IOMODULE", "IO", 8).element(completeElement(1, "One")));
    }
    /// Scans with these options and looks for what they hide.
    std::vector<std::pair<std::string, std::vector<KvEHiddenBy>>> hidden() {
        inventory.emplace(messages.writer(), options, errors());
        inventory->findHiddenElements();
        EXPECT_TRUE(target.serve().served);
        EXPECT_TRUE(inventory->scanInventory("127.0.0.1"));
        std::vector<std::pair<std::string, std::vector<KvEHiddenBy>>> elements;
        for (const KvTHiddenElement& element : inventory->hiddenElements()) {
            elements.emplace_back(element.displayName, element.hiddenBy);
        }
        return elements;
    }
};

class HiddenElementRow : public HiddenElements, public testing::WithParamInterface<HiddenRow> {};

} // namespace

TEST_P(HiddenElementRow, HasEveryReason) {
    const HiddenRow& row = GetParam();
    options.boardTypeFilter = row.boardType;
    options.serialNumberFilter = row.serialNumber;
    options.elementNameFilter = row.elementName;
    options.configurationElements = row.configuration;
    EXPECT_EQ(row.hidden, hidden());
    EXPECT_THAT(takeErrors(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Filters, HiddenElementRow,
    testing::Values(
        HiddenRow{"None", "", "", "", false, {{"NODE, SN 7, Two", {byKind}}}},
        HiddenRow{"Configuration", "", "", "", true, {{"NODE, SN 7, One", {byKind}}, {"IO, SN 8, One", {byKind}}}},
        HiddenRow{"BoardType", "NODE", "", "", false, {{"IO, SN 8, One", {byType}}, {"NODE, SN 7, Two", {byKind}}}},
        HiddenRow{"SerialNumber", "", "7", "", false, {{"IO, SN 8, One", {byNumber}}, {"NODE, SN 7, Two", {byKind}}}},
        HiddenRow{"ElementName", "", "", "One", false, {{"NODE, SN 7, Two", {byKind, byName}}}},
        HiddenRow{"All",
                  "IO",
                  "8",
                  "Two",
                  false,
                  {{"NODE, SN 7, One", {byType, byNumber, byName}},
                   {"IO, SN 8, One", {byName}},
                   {"NODE, SN 7, Two", {byKind, byType, byNumber}}}},
        HiddenRow{"AllThatLetThrough", "NODE, IO", "7, 8", "One, Two", false, {{"NODE, SN 7, Two", {byKind}}}}),
    [](const auto& row) { return row.param.name; });

TEST_F(HiddenElements, AreForgottenWithTheElements) {
    EXPECT_EQ(1U, hidden().size());
    inventory->clear();
    EXPECT_THAT(inventory->hiddenElements(), IsEmpty());
    EXPECT_EQ(0U, count());
}

TEST_F(HiddenElements, WarningsOfTheTreeAreNotRepeated) {
    target.add(item("IOMODULE").instance(9).add(item("UPDATE_INFO").add(item("UPDATE_ELEMENT"))));
    options.boardTypeFilter = "NODE";
    options.verbose = true;
    inventory.emplace(messages.writer(), options, errors());
    EXPECT_TRUE(target.serve().served);
    EXPECT_TRUE(inventory->scanInventory("127.0.0.1"));
    const std::wstring once = printed();
    const std::vector<std::string> errorsOnce = takeErrors();
    KeptMessages::forget();
    static_cast<void>(hidden());
    EXPECT_EQ(once, printed());
    EXPECT_EQ(errorsOnce, takeErrors());
}
