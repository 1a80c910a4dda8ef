#include "InventoryDescription.h"

#include "KvCInventoryItem.h"
#include "KvNInventoryIDs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <utility>
#include <variant>

// What a target may answer and no emulated one does: the items here are this program's own.

/// A value that is read as its own type alone; one of no type cannot be read.
class KvCInventoryParameter {
public:
    using Value = std::variant<std::monostate, std::uint32_t, std::uint8_t, KvCString, KvCVersion>;

    explicit KvCInventoryParameter(Value value) : value_(std::move(value)) {}
    [[nodiscard]] const Value& value() const { return value_; }

private:
    Value value_;
};

struct KvCInventoryItem::Impl {
    KvCInventoryAddress id;
    KvCInventoryAddress address;
    std::map<std::string, KvCInventoryParameter> parameters;
    std::vector<std::unique_ptr<KvCInventoryItem>> items;
    KvCInventoryItem* next = nullptr;
};

KvCInventoryItem::KvCInventoryItem(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

KvCInventoryItem::~KvCInventoryItem() = default;

const KvCInventoryAddress& KvCInventoryItem::getID() const {
    return impl_->id;
}

const KvCInventoryAddress& KvCInventoryItem::getAddress() const {
    return impl_->address;
}

KvCInventoryItem* KvCInventoryItem::getFirstSubItem() const {
    return impl_->items.empty() ? nullptr : impl_->items.front().get();
}

KvCInventoryItem* KvCInventoryItem::getNext() const {
    return impl_->next;
}

const KvCInventoryParameter* KvCInventoryItem::getParameter(const KvCInventoryAddress& path) const {
    const auto found = impl_->parameters.find(std::string(path.toString().view()));
    return found != impl_->parameters.end() ? &found->second : nullptr;
}

namespace {

template <typename Value>
void answer(const KvCInventoryItem& item, KvCErrorListPool& errors, const KvCInventoryAddress& path, Value& value) {
    const KvCInventoryParameter* const parameter = item.getParameter(path);
    const Value* const found = parameter != nullptr ? std::get_if<Value>(&parameter->value()) : nullptr;
    if (found == nullptr) {
        errors.addError({.code = 1, .text = "Not so.", .function = {}});
        return;
    }
    value = *found;
}

} // namespace

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint32_t& value) const {
    answer(*this, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint8_t& value) const {
    answer(*this, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCString& value) const {
    answer(*this, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCVersion& value) const {
    answer(*this, errors, path, value);
}

namespace {

using namespace KvNInventoryIDs;
using testing::ElementsAre;

/// An item to be described: `OwnItem(HCN).parameter(NAME, KvCString("Node")).add(OwnItem(CN))`.
class OwnItem {
public:
    explicit OwnItem(const KvCInventoryAddress& id) : impl_(std::make_unique<KvCInventoryItem::Impl>()) {
        impl_->id = id;
        impl_->address = id;
    }

    OwnItem& parameter(const KvCInventoryAddress& path, KvCInventoryParameter::Value value) {
        impl_->parameters.emplace(std::string(path.toString().view()), std::move(value));
        return *this;
    }
    OwnItem& add(OwnItem& below) {
        auto made = below.make();
        if (!impl_->items.empty()) {
            lastImpl_->next = made.get();
        }
        lastImpl_ = below.made_;
        impl_->items.push_back(std::move(made));
        return *this;
    }
    OwnItem& add(OwnItem&& below) { return add(below); }

    [[nodiscard]] std::unique_ptr<KvCInventoryItem> make() {
        made_ = impl_.get();
        return std::make_unique<KvCInventoryItem>(std::move(impl_));
    }

private:
    std::unique_ptr<KvCInventoryItem::Impl> impl_;
    KvCInventoryItem::Impl* made_ = nullptr;
    KvCInventoryItem::Impl* lastImpl_ = nullptr;
};

/// The description of the root with this below it, on one line.
std::string described(OwnItem& root, std::vector<std::string>& warnings) {
    const auto tree = root.make();
    DescribedInventory description = describeInventory(*tree);
    warnings = description.warnings;
    return description.root ? description.root->dump() : "";
}

TEST(InventoryDescription, AnItemOfUnknownKindIsNamedAndLeftOutWithWhatIsBelow) {
    OwnItem root(ROOT);
    root.add(OwnItem(KvCInventoryAddress(77, 3)).add(OwnItem(HCN))).add(OwnItem(CN));
    // Parameters and items have numbers of their own.
    root.add(OwnItem(BOARD_TYPE)).add(OwnItem(PRODUCT));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings), R"({"id":"ROOT","items":[{"id":"CN"}]})");
    EXPECT_THAT(warnings, ElementsAre("77[3] is of an unknown kind; it is left out with everything below it",
                                      "BOARD_TYPE[1] is of an unknown kind; it is left out with everything below it",
                                      "PRODUCT[1] is of an unknown kind; it is left out with everything below it"));
}

TEST(InventoryDescription, ARootOfUnknownKindHasNoDescription) {
    OwnItem root(KvCInventoryAddress(99));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings), "");
    EXPECT_THAT(warnings, ElementsAre("99[1] is of an unknown kind; it is left out with everything below it"));
}

TEST(InventoryDescription, AnItemThatNoAddressTellsApartIsNamedAndLeftOut) {
    OwnItem root(ROOT);
    root.add(OwnItem(ION[2])).add(OwnItem(ION[2]).add(OwnItem(CN))).add(OwnItem(ION[0])).add(OwnItem(ION[3]));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings),
              R"({"id":"ROOT","items":[{"id":"ION","instance":2},{"id":"ION","instance":3}]})");
    EXPECT_THAT(warnings, ElementsAre("ION[2] is there twice; it is left out with everything below it",
                                      "ION[0] has the instance number 0; it is left out with everything below it"));
}

TEST(InventoryDescription, AnInstanceNumberIsWrittenWhereItIsNotThePosition) {
    OwnItem root(ROOT[5]);
    root.add(OwnItem(ION[1])).add(OwnItem(CN[2])).add(OwnItem(ION[2])).add(OwnItem(ION[1])).add(OwnItem(ION[4]));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings), R"({"id":"ROOT","instance":5,"items":[{"id":"ION"},{"id":"CN","instance":2},)"
                                         R"({"id":"ION"},{"id":"ION","instance":4}]})");
    EXPECT_EQ(warnings.size(), 1U);
}

TEST(InventoryDescription, EachParameterIsReadByWhicheverTypeTheTargetHasForIt) {
    OwnItem root(ROOT);
    root.parameter(VALID, std::uint8_t(1)).parameter(VERSION, KvCVersion("23.2a12"));
    root.parameter(ID, KvCString("text")).parameter(NAME, std::uint32_t(4294967295U)).parameter(SLOT, std::uint32_t(3));
    root.parameter(PRODUCT / VERSION, std::uint32_t(4)).parameter(RACKNAME, std::uint8_t(255));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings),
              R"({"id":"ROOT","parameters":{"ID":"text","NAME":4294967295,"SLOT":3,"RACKNAME":255,"VALID":1,)"
              R"("VERSION":"23.2a12","PRODUCT/VERSION":4}})");
    EXPECT_THAT(warnings, ElementsAre());
}

TEST(InventoryDescription, WhatCannotBeReadIsNamedAndLeftOut) {
    OwnItem root(ROOT);
    root.parameter(PRODUCT / NAME, {}).parameter(CHECKSUM_CRC32, {}).parameter(VERSION, {});
    root.parameter(NAME, KvCVersion("1.0")).parameter(SLOT, KvCVersion("1.0"));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings), R"({"id":"ROOT"})");
    EXPECT_THAT(warnings, ElementsAre("NAME of ROOT[1] cannot be read; it is left out",
                                      "PRODUCT/NAME of ROOT[1] cannot be read; it is left out",
                                      "SLOT of ROOT[1] cannot be read; it is left out",
                                      "CHECKSUM_CRC32 of ROOT[1] cannot be read; it is left out",
                                      "VERSION of ROOT[1] cannot be read; it is left out"));
}

TEST(InventoryDescription, ATextThatIsNotUtf8IsNamed) {
    OwnItem root(ROOT);
    root.parameter(NAME, KvCString("Gr\xFCn")).parameter(UNITNAME, KvCString(std::string_view("a\0b", 3)));
    std::vector<std::string> warnings;
    EXPECT_EQ(described(root, warnings),
              "{\"id\":\"ROOT\",\"parameters\":{\"NAME\":\"Gr\xEF\xBF\xBDn\",\"UNITNAME\":\"a\\u0000b\"}}");
    EXPECT_THAT(warnings, ElementsAre("NAME of ROOT[1] is not UTF-8; what is not is written as U+FFFD"));
}

struct LongText {
    const char* about;
    std::string text;
    std::string written;
    std::vector<std::string> warnings;
};

TEST(InventoryDescription, ATextOfMoreBytesThanADescriptionMayHoldIsCutAndNamed) {
    const std::string longest(4096, 'a');
    const std::string euro = "\xE2\x82\xAC";
    const std::string replaced = "\xEF\xBF\xBD";
    const std::string cut = " bytes; it is cut to 4096, the most that a target.json may hold";
    std::string manyReplaced;
    for (int count = 0; count < 1365; ++count) {
        manyReplaced += replaced;
    }
    const LongText rows[] = {
        {"as long as allowed", longest, longest, {}},
        {"one byte more", longest + "b", longest, {"NAME of ROOT[1] has 4097" + cut}},
        {"a character at the limit", longest.substr(1) + euro, longest.substr(1), {"NAME of ROOT[1] has 4098" + cut}},
        {"a character before the limit",
         longest.substr(3) + euro + "b",
         longest.substr(3) + euro,
         {"NAME of ROOT[1] has 4097" + cut}},
        // Each byte that is not UTF-8 is written as three.
        {"not UTF-8",
         std::string(1366, '\xFF'),
         manyReplaced,
         {"NAME of ROOT[1] is not UTF-8; what is not is written as U+FFFD", "NAME of ROOT[1] has 4098" + cut}},
    };
    for (const LongText& row : rows) {
        OwnItem root(ROOT);
        root.parameter(NAME, KvCString(row.text));
        std::vector<std::string> warnings;
        EXPECT_EQ(described(root, warnings), R"({"id":"ROOT","parameters":{"NAME":")" + row.written + R"("}})")
            << row.about;
        EXPECT_EQ(warnings, row.warnings) << row.about;
    }
}

} // namespace
