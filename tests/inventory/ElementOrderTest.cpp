#include "InventoryFixture.h"

#include "KvEmulation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

/// An item of a random target.
struct Node {
    std::string identifier;
    std::uint32_t instance = 1;
    /// Its own, unlike all others.
    std::string name;
    bool hasUnitName = false;
    bool hasPackageName = false;
    bool hasConfiguration = true;
    bool isConfiguration = false;
    std::vector<Node> items;
};

bool isElement(const Node& node) {
    return node.identifier == "UPDATE_ELEMENT" || node.identifier == "FILESYSTEM_ELEMENT";
}

/// Makes targets at random, the same ones in each run.
class RandomTargets {
public:
    Node next() {
        names_ = 0;
        Node root;
        root.identifier = "ROOT";
        fill(root, 0);
        return root;
    }

private:
    bool happens(std::uint32_t percentage) { return random_() % 100 < percentage; }

    void fill(Node& node, std::uint32_t depth) {
        constexpr std::uint32_t deepest = 5;
        const std::size_t fewest = depth < 2 ? 2 : 0;
        const std::size_t count = depth < deepest ? fewest + random_() % 4 : 0;
        for (std::size_t number = 0; number < count; ++number) {
            Node& below = node.items.emplace_back();
            below.identifier = identifierBelow(node);
            below.name = below.identifier + std::to_string(++names_);
            below.hasUnitName = !isElement(below) && happens(20);
            below.hasPackageName = !isElement(below) && happens(10);
            below.hasConfiguration = happens(90);
            below.isConfiguration = happens(10);
            fill(below, depth + 1);
        }
        numberInstances(node.items, happens(20));
    }

    /// Mostly what makes sense.
    const char* identifierBelow(const Node& node) {
        constexpr std::array identifiers = {
            "HCN",     "CN",       "BACKPLANE",   "IOROUTER",       "IOMODULE",
            "NETWORK", "FIRMWARE", "UPDATE_INFO", "UPDATE_ELEMENT", "FILESYSTEM_ELEMENT"};
        if (node.identifier == "UPDATE_INFO" && happens(80)) {
            return "UPDATE_ELEMENT";
        }
        return happens(40) ? "UPDATE_INFO" : identifiers[random_() % identifiers.size()];
    }

    /// Instances follow the order of the items, or go backwards.
    static void numberInstances(std::vector<Node>& items, bool backwards) {
        std::map<std::string, std::uint32_t> counts;
        const auto number = [&counts](Node& node) { node.instance = ++counts[node.identifier]; };
        if (backwards) {
            std::for_each(items.rbegin(), items.rend(), number);
        } else {
            std::for_each(items.begin(), items.end(), number);
        }
    }

    std::mt19937 random_{20261121};
    std::uint32_t names_ = 0;
};

ItemBuilder builderOf(const Node& node) {
    ItemBuilder builder = isElement(node) ? item(node.identifier)
                                                .parameter("NAME", node.name)
                                                .parameter("VERSION", "1.0")
                                                .parameter("VERSION_HISTORY", "")
                                          : completeBoard(node.identifier, "QB1000", 1);
    builder.instance(node.instance);
    if (isElement(node) && node.hasConfiguration) {
        builder.parameter("CONFIGURATION", std::uint64_t(node.isConfiguration ? 1 : 0));
    }
    if (node.hasUnitName) {
        builder.parameter("PRODUCT/UNITNAME", node.name);
    }
    if (node.hasPackageName) {
        builder.parameter("PRODUCT/PACKAGE_NAME", node.name);
    }
    for (const Node& below : node.items) {
        builder.add(builderOf(below));
    }
    return builder;
}

/// Walks a random target in the plainest way: every insertion scans the list from its front and moves the indices of
/// all records behind.
class PlainWalk {
public:
    struct Record {
        std::string name;
        const Node* unit = nullptr;
        std::uint32_t index = 0;
    };

    explicit PlainWalk(const Node& root) { walk(root, {}, nullptr); }

    [[nodiscard]] const std::list<Record>& records() const { return records_; }
    [[nodiscard]] std::size_t warnings() const { return warnings_; }
    /// An element was inserted before others.
    [[nodiscard]] bool hasRegrouped() const { return hasRegrouped_; }

private:
    using Ancestors = std::vector<const Node*>;

    static const Node* firstBelow(const Node& node, const std::string& identifier) {
        for (const Node& below : node.items) {
            if (below.identifier == identifier) {
                return &below;
            }
        }
        return nullptr;
    }

    static const Node* unitOf(const Node& node, const Node* inherited) {
        if (node.hasUnitName || node.hasPackageName) {
            return &node;
        }
        const Node* candidate = &node;
        if (node.identifier == "HCN") {
            const Node* const cn = firstBelow(node, "CN");
            candidate = cn != nullptr ? cn : &node;
        } else if (node.identifier != "IOROUTER") {
            return inherited;
        }
        const Node* const backplane = firstBelow(*candidate, "BACKPLANE");
        return backplane != nullptr && backplane->hasUnitName ? backplane : inherited;
    }

    void walk(const Node& node, Ancestors ancestors, const Node* inherited) {
        const Node* const unit = unitOf(node, inherited);
        if (isElement(node)) {
            visit(node, ancestors, unit);
        }
        if (isElement(node) || node.identifier == "FIRMWARE") {
            return;
        }
        ancestors.push_back(&node);
        const auto isFirst = [](const Node& below) { return below.identifier == "UPDATE_INFO" && below.instance == 1; };
        for (const Node& below : node.items) {
            if (isFirst(below)) {
                walk(below, ancestors, unit);
            }
        }
        for (const Node& below : node.items) {
            if (!isFirst(below)) {
                walk(below, ancestors, unit);
            }
        }
    }

    void visit(const Node& node, const Ancestors& ancestors, const Node* unit) {
        const Node& parent = *ancestors.back();
        if (parent.identifier != "UPDATE_INFO" || parent.instance != 1 || !node.hasConfiguration) {
            ++warnings_;
        } else if (!node.isConfiguration) {
            insert(node.name, unit);
        }
    }

    void insert(const std::string& name, const Node* unit) {
        auto place = records_.begin();
        bool isMet = false;
        while (place != records_.end() && (!isMet || place->unit == unit)) {
            isMet = isMet || place->unit == unit;
            ++place;
        }
        const bool atEnd = place == records_.end();
        hasRegrouped_ = hasRegrouped_ || !atEnd;
        const auto inserted = records_.insert(place, {name, unit, 0});
        inserted->index = atEnd ? static_cast<std::uint32_t>(records_.size() - 1) : place->index;
        for (auto behind = std::next(inserted); behind != records_.end(); ++behind) {
            ++behind->index;
        }
    }

    std::list<Record> records_;
    std::size_t warnings_ = 0;
    bool hasRegrouped_ = false;
};

} // namespace

/// The order of the element list.
class ElementOrderTest : public InventoryTest {
protected:
    void expectIndicesToBePositions() {
        std::uint32_t position = 0;
        for (const KvTUpdateElement& one : inventory->elements()) {
            ASSERT_EQ(one.index, position++);
        }
    }
    /// A board that is in the unit around it or, with a name, a unit of its own.
    static ItemBuilder module(std::uint32_t instance, const char* elementName, const char* unitName = nullptr) {
        ItemBuilder builder = carrier("IOMODULE", elementName).instance(instance);
        return unitName != nullptr ? builder.parameter("PRODUCT/UNITNAME", unitName) : builder;
    }
};

TEST_F(ElementOrderTest, UnitsMetAlternatelyAreGrouped) {
    target.add(item("BACKPLANE")
                   .parameter("PRODUCT/UNITNAME", "A")
                   .add(module(1, "a1"))
                   .add(module(2, "b1", "B"))
                   .add(module(3, "a2")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("a1 in A", "a2 in A", "b1 in B"));
    expectIndicesToBePositions();
}

TEST_F(ElementOrderTest, UnitsStandInTheOrderOfTheirFirstElement) {
    target.add(item("BACKPLANE")
                   .parameter("PRODUCT/UNITNAME", "A")
                   .add(module(1, "b1", "B"))
                   .add(module(2, "a1"))
                   .add(module(3, "c1", "C"))
                   .add(module(4, "a2"))
                   .add(module(5, "a3")));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("b1 in B", "a1 in A", "a2 in A", "a3 in A", "c1 in C"));
    expectIndicesToBePositions();
}

TEST_F(ElementOrderTest, ElementsWithoutAUnitAreAGroupToo) {
    target.add(module(1, "x1")).add(module(2, "a1", "A")).add(module(3, "x2")).add(module(4, "b1", "B"));
    scan();
    EXPECT_THAT(namesInUnits(), ElementsAre("x1 in ", "x2 in ", "a1 in A", "b1 in B"));
    expectIndicesToBePositions();
}

TEST_F(ElementOrderTest, UnitsOfOneNameStaySeparate) {
    target.add(item("BACKPLANE")
                   .parameter("PRODUCT/UNITNAME", "A")
                   .add(module(1, "a1"))
                   .add(module(2, "other1", "A"))
                   .add(module(3, "a2")));
    scan();
    EXPECT_THAT(names(), ElementsAre("a1", "a2", "other1"));
}

TEST_F(ElementOrderTest, EqualElementsAreAllListed) {
    target.add(completeBoard("HCN", "QB1000", 1).element(completeElement(1, "a")).element(completeElement(1, "a")));
    scan();
    EXPECT_THAT(names(), ElementsAre("a", "a"));
    expectIndicesToBePositions();
}

TEST_F(ElementOrderTest, RandomTargetsGiveTheListOfThePlainestWalk) {
    constexpr int rounds = 250;
    RandomTargets targets;
    std::size_t elements = 0;
    int regrouped = 0;
    for (int round = 0; round < rounds; ++round) {
        const Node root = targets.next();
        const PlainWalk expected(root);
        TargetBuilder random;
        random.root(builderOf(root));
        KvEmulation::reset();
        static_cast<void>(random.serve());
        KeptMessages::forget();
        inventory.emplace(messages.writer(), options, errors());
        ASSERT_TRUE(inventory->scanInventory("127.0.0.1"));
        ASSERT_EQ(count(), expected.records().size()) << "round " << round;
        ASSERT_EQ(KeptMessages::list().size(), expected.warnings()) << "round " << round;
        auto found = inventory->elements().begin();
        for (const PlainWalk::Record& record : expected.records()) {
            ASSERT_EQ(found->name.view(), record.name) << "round " << round;
            ASSERT_EQ(found->unitName.view(), record.unit != nullptr ? record.unit->name : "") << "round " << round;
            ASSERT_EQ(found->index, record.index) << "round " << round;
            ++found;
        }
        elements += count();
        regrouped += expected.hasRegrouped() ? 1 : 0;
        inventory.reset();
    }
    // Else the targets would tell nothing.
    EXPECT_GT(elements, 1000U);
    EXPECT_GT(regrouped, rounds / 10);
    RecordProperty("elements", std::to_string(elements));
    RecordProperty("regrouped", regrouped);
    inventory.emplace(messages.writer(), options, errors());
}

TEST_F(ElementOrderTest, TenThousandElementsAreListed) {
    constexpr std::uint32_t pairs = 5000;
    ItemBuilder rack = item("BACKPLANE").parameter("PRODUCT/UNITNAME", "Rack");
    for (std::uint32_t pair = 0; pair < pairs; ++pair) {
        const std::string number = std::to_string(pair);
        rack.add(module(2 * pair + 1, ("inside " + number).c_str()));
        rack.add(module(2 * pair + 2, ("alone " + number).c_str(), "Own"));
    }
    target.add(std::move(rack));
    scan();
    ASSERT_EQ(count(), 2 * pairs);
    expectIndicesToBePositions();
    std::uint32_t position = 0;
    for (const KvTUpdateElement& one : inventory->elements()) {
        const bool isInside = position < pairs;
        ASSERT_EQ(one.name.view(), (isInside ? "inside " : "alone ") + std::to_string(position % pairs));
        ASSERT_EQ(one.unitName, isInside ? "Rack" : "Own");
        ++position;
    }
}
