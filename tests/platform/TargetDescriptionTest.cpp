// What target.json may hold, and what is said about one that is refused.

#include "EmulationTest.h"
#include "KvEmulation.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class TargetDescription : public EmulationTest {
protected:
    /// What is said about this description, without the path of the file.
    std::string refusalOf(std::string_view text) {
        TargetBuilder target;
        const std::string folder = target.write(text);
        const KvEmulation::KvTServeResult result = KvEmulation::serve(folder);
        EXPECT_FALSE(result.served) << text;
        const std::string file = folder + "/target.json: ";
        EXPECT_EQ(result.error.substr(0, file.size()), file);
        return result.error.substr(std::min(file.size(), result.error.size()));
    }
    void expectServed(std::string_view text) {
        TargetBuilder target;
        const KvEmulation::KvTServeResult result = KvEmulation::serve(target.write(text));
        EXPECT_TRUE(result.served) << text << '\n' << result.error;
        EXPECT_THAT(result.warnings, IsEmpty()) << text;
    }
};

TEST_F(TargetDescription, EveryKeyIsOptionalButTheIdentifierOfAnItem) {
    expectServed("{}");
    expectServed(R"({"addresses": [], "serviceStatus": 46, "rebootLookups": 3, "faults": []})");
    expectServed(R"({"inventory": {"id": "ROOT"}})");
}

TEST_F(TargetDescription, CommentsAreAllowedAtEveryLevel) {
    expectServed(R"({"comment": 1, "inventory": {"comment": "a", "id": "ROOT", "parameters": {"comment": [1]},
        "items": [{"id": "UPDATE_ELEMENT", "update": {"comment": null,
                   "errors": [{"comment": {}, "code": 1, "text": ""}]}}]},
        "faults": [{"comment": "b", "call": "scan", "errors": [{"comment": 2, "code": 1, "text": ""}]}]})");
}

TEST_F(TargetDescription, AFaultCanBePutAtEveryOperation) {
    for (const std::string& call : KvEmulation::faultOperations()) {
        expectServed(std::string(R"({"faults": [{"call": ")") + call + R"("}]})");
    }
}

struct Refusal {
    const char* about;
    std::string text;
    const char* message;
};

/// The description whose inventory's only items are these.
std::string withItem(const std::string& items) {
    return R"({"inventory": {"id": "ROOT", "items": [)" + items + "]}}";
}

const Refusal refusals[] = {
    {"no object", "[]", "$: an object is expected"},
    {"an unknown key", R"({"adresses": []})",
     "$.adresses: unknown key; expected one of addresses, serviceStatus, rebootLookups, inventory, faults"},
    {"an odd unknown key", R"({"a b": 1})",
     R"($["a b"]: unknown key; expected one of addresses, serviceStatus, rebootLookups, inventory, faults)"},
    {"addresses that are no list", R"({"addresses": "127.0.0.1"})", "$.addresses: an array is expected"},
    {"an address that is no text", R"({"addresses": [1]})", "$.addresses[0]: a text is expected"},
    {"an address with three numbers", R"({"addresses": ["127.0.0.1", "1.2.3"]})",
     "$.addresses[1]: \"1.2.3\" is not an IPv4 address: four decimal numbers of 0 to 255 with dots between are "
     "expected"},
    {"an address with something behind a zero byte", R"({"addresses": ["1.2.3.4\u0000"]})",
     "$.addresses[0]: \"1.2.3.4\\u0000\" is not an IPv4 address: four decimal numbers of 0 to 255 with dots "
     "between are expected"},
    {"a service status that is a text", R"({"serviceStatus": "33"})",
     "$.serviceStatus: a whole number of -2147483648 to 2147483647 is expected"},
    {"a service status out of range", R"({"serviceStatus": 2147483648})",
     "$.serviceStatus: a whole number of -2147483648 to 2147483647 is expected"},
    {"a service status with a fraction", R"({"serviceStatus": 33.0})",
     "$.serviceStatus: a whole number of -2147483648 to 2147483647 is expected"},
    {"a negative number of lookups", R"({"rebootLookups": -1})",
     "$.rebootLookups: an unsigned number of 0 to 4294967295 is expected"},
    {"an inventory that is no object", R"({"inventory": []})", "$.inventory: an object is expected"},
    {"an item without an identifier", R"({"inventory": {"items": []}})", "$.inventory: the key id is missing"},
    {"an unknown identifier", withItem(R"({"id": "CN"}, {"id": "CN"}, {"id": "HNC"})"),
     R"($.inventory.items[2].id: unknown identifier "HNC")"},
    {"the name of a parameter as identifier", withItem(R"({"id": "NAME"})"),
     R"($.inventory.items[0].id: unknown identifier "NAME")"},
    {"an identifier that is a number", withItem(R"({"id": 2})"), "$.inventory.items[0].id: a text is expected"},
    {"an unknown key of an item", withItem(R"({"id": "CN", "parameter": {}})"),
     "$.inventory.items[0].parameter: unknown key; expected one of id, instance, parameters, items, update"},
    {"an instance 0", withItem(R"({"id": "CN", "instance": 0})"),
     "$.inventory.items[0].instance: an unsigned number of 1 to 4294967295 is expected"},
    {"an instance out of range", withItem(R"({"id": "CN", "instance": 4294967296})"),
     "$.inventory.items[0].instance: an unsigned number of 1 to 4294967295 is expected"},
    {"an instance given twice", withItem(R"({"id": "CN", "instance": 7}, {"id": "HCN"}, {"id": "CN", "instance": 7})"),
     "$.inventory.items[2]: the instance 7 of CN is given twice among siblings"},
    {"an instance that is another one's default", withItem(R"({"id": "CN", "instance": 2}, {"id": "CN"})"),
     "$.inventory.items[1]: the instance 2 of CN is given twice among siblings"},
    {"parameters that are no object", withItem(R"({"id": "CN", "parameters": []})"),
     "$.inventory.items[0].parameters: an object is expected"},
    {"an unknown parameter", withItem(R"({"id": "CN", "parameters": {"SERIAL": 1}})"),
     "$.inventory.items[0].parameters.SERIAL: unknown parameter name"},
    {"an unknown group", withItem(R"({"id": "CN", "parameters": {"UNIT/NAME": 1}})"),
     R"($.inventory.items[0].parameters["UNIT/NAME"]: unknown parameter name)"},
    {"a group without a parameter", withItem(R"({"id": "CN", "parameters": {"PRODUCT": 1}})"),
     "$.inventory.items[0].parameters.PRODUCT: unknown parameter name"},
    {"a parameter that is neither text nor unsigned", withItem(R"({"id": "CN", "parameters": {"SLOT": -1}})"),
     "$.inventory.items[0].parameters.SLOT: a text or an unsigned number is expected"},
    {"a parameter that is a truth value", withItem(R"({"id": "CN", "parameters": {"VALID": true}})"),
     "$.inventory.items[0].parameters.VALID: a text or an unsigned number is expected"},
    {"items that are no list", withItem(R"({"id": "CN", "items": {}})"),
     "$.inventory.items[0].items: an array is expected"},
    {"an item that is no object", withItem("null"), "$.inventory.items[0]: an object is expected"},
    {"an update that is no object", withItem(R"({"id": "UPDATE_ELEMENT", "update": 1})"),
     "$.inventory.items[0].update: an object is expected"},
    {"an unknown key of an update", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"poll": 1}})"),
     "$.inventory.items[0].update.poll: unknown key; expected one of polls, progress, state, errors, activation"},
    {"polls out of range", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"polls": 4294967296}})"),
     "$.inventory.items[0].update.polls: an unsigned number of 0 to 4294967295 is expected"},
    {"a progress that is no pair", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"progress": [[1, 2], [3]]}})"),
     "$.inventory.items[0].update.progress[1]: a pair [done, total] is expected"},
    {"a progress of texts", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"progress": [[1, "2"]]}})"),
     "$.inventory.items[0].update.progress[0][1]: an unsigned number of 0 to 4294967295 is expected"},
    {"a state that is a text", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"state": "2"}})"),
     "$.inventory.items[0].update.state: an unsigned number of 0 to 4294967295 is expected"},
    {"an unknown activation", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"activation": "later"}})"),
     R"($.inventory.items[0].update.activation: "immediate" or "reboot" is expected)"},
    {"an error without a text", withItem(R"({"id": "UPDATE_ELEMENT", "update": {"errors": [{"code": 1}]}})"),
     "$.inventory.items[0].update.errors[0]: the key text is missing"},
    {"an error without a code", R"({"faults": [{"call": "scan", "errors": [{"text": "a"}]}]})",
     "$.faults[0].errors[0]: the key code is missing"},
    {"an unknown key of an error", R"({"faults": [{"call": "scan", "errors": [{"code": 1, "text": "", "x": 1}]}]})",
     "$.faults[0].errors[0].x: unknown key; expected one of code, text, originNode, timeStamp, mainModule, "
     "subModule, function, line"},
    {"a fault without a call", R"({"faults": [{}]})", "$.faults[0]: the key call is missing"},
    {"an unknown call", R"({"faults": [{"call": "createFilter"}]})",
     R"($.faults[0].call: unknown call "createFilter")"},
    {"a call that takes no fault", R"({"faults": [{"call": "deleteInventoryTree"}]})",
     R"($.faults[0].call: unknown call "deleteInventoryTree")"},
    {"an unknown key of a fault", R"({"faults": [{"call": "scan", "count": 1}]})",
     "$.faults[0].count: unknown key; expected one of call, at, id, occurrence, errors, status"},
    {"an address that is none", R"({"faults": [{"call": "lock", "at": "HCN[0]"}]})",
     R"($.faults[0].at: "HCN[0]" is not an address like HCN[1]/UPDATE_INFO[1])"},
    {"an occurrence that is a text", R"({"faults": [{"call": "lock", "occurrence": "all"}]})",
     "$.faults[0].occurrence: an unsigned number of 0 to 4294967295 is expected"},
    {"a status with a fraction", R"({"faults": [{"call": "lock", "status": 1.5}]})",
     "$.faults[0].status: a whole number of -2147483648 to 4294967295 is expected"},
};

TEST_F(TargetDescription, AMalformedOneIsRefusedWithPlaceAndReason) {
    for (const Refusal& refusal : refusals) {
        EXPECT_EQ(refusalOf(refusal.text), refusal.message) << refusal.about;
    }
}

/// Where a description has texts.
const Refusal placesOfTexts[] = {
    {"an identifier", withItem(R"({"id": "TEXT"})"), "$.inventory.items[0].id"},
    {"a parameter", withItem(R"({"id": "CN", "parameters": {"NAME": "TEXT"}})"),
     "$.inventory.items[0].parameters.NAME"},
    {"a version", withItem(R"({"id": "CN", "parameters": {"PRODUCT/VERSION": "TEXT"}})"),
     "$.inventory.items[0].parameters[\"PRODUCT/VERSION\"]"},
    {"an error of an update",
     withItem(R"({"id": "UPDATE_ELEMENT", "update": {"errors": [{"code": 1, "text": "TEXT"}]}})"),
     "$.inventory.items[0].update.errors[0].text"},
    {"an error of a fault", R"({"faults": [{"call": "scan", "errors": [{"code": 1, "text": "TEXT"}]}]})",
     "$.faults[0].errors[0].text"},
    {"a function", R"({"faults": [{"call": "scan", "errors": [{"code": 1, "text": "", "function": "TEXT"}]}]})",
     "$.faults[0].errors[0].function"},
    {"a call", R"({"faults": [{"call": "TEXT"}]})", "$.faults[0].call"},
    {"an address of a fault", R"({"faults": [{"call": "lock", "at": "TEXT"}]})", "$.faults[0].at"},
    {"an address", R"({"addresses": ["TEXT"]})", "$.addresses[0]"},
};

std::string withText(std::string description, const std::string& text) {
    return description.replace(description.find("TEXT"), std::string_view("TEXT").size(), text);
}

TEST_F(TargetDescription, ATextOfMoreThan4096BytesIsRefusedWhereverItIs) {
    for (const Refusal& place : placesOfTexts) {
        EXPECT_EQ(refusalOf(withText(place.text, std::string(4097, 'a'))),
                  std::string(place.message) + ": the text has 4097 bytes; at most 4096 are allowed")
            << place.about;
    }
}

TEST_F(TargetDescription, ATextOf4096BytesIsRead) {
    for (const Refusal& place : {placesOfTexts[1], placesOfTexts[2], placesOfTexts[3], placesOfTexts[4]}) {
        expectServed(withText(place.text, std::string(4096, 'a')));
    }
    const std::string umlaut = "\xC3\xA4";
    std::string text;
    for (int count = 0; count < 2048; ++count) {
        text += umlaut;
    }
    // Bytes count, as they are once escapes are read.
    expectServed(withText(placesOfTexts[1].text, text));
    EXPECT_THAT(refusalOf(withText(placesOfTexts[1].text, text + "a")), HasSubstr("4097 bytes"));
    expectServed(withText(placesOfTexts[1].text, std::string(4090, 'a') + R"(\u00e4\u00e4\u00e4)"));
}

TEST_F(TargetDescription, CommentsAndTextsInThemMayBeOfAnyLength) {
    const std::string text(100000, 'a');
    expectServed(withText(R"({"comment": "TEXT", "inventory": {"id": "ROOT"}})", text));
    expectServed(withText(withItem(R"({"id": "CN", "comment": ["TEXT"], "parameters": {"comment": 1}})"), text));
    expectServed(withText(withItem(R"({"id": "CN", "parameters": {"comment": {"a": "TEXT"}}})"), text));
}

/// A description of this many elements below a board with this name; the board's address and the root's count, too.
std::string withElements(std::size_t count, const std::string& name, const std::string& ownName = {}) {
    std::string elements;
    for (std::size_t index = 0; index < count; ++index) {
        elements += index == 0 ? "" : ",";
        elements += R"({"id": "UPDATE_ELEMENT", "parameters": {"NAME": ")" + (index == 1 ? ownName : "") + R"("}})";
    }
    return withItem(R"({"id": "CN", "parameters": {"PRODUCT/NAME": ")" + name + R"("}, "items": [)" + elements + "]}");
}

TEST_F(TargetDescription, ASmallOneThatMakesMuchTextIsRefused) {
    const std::string longest(4096, 'a');
    // The names of a board are shown with each of its elements, and each line is as long as the longest.
    expectServed(withElements(3000, longest));
    EXPECT_EQ(refusalOf(withElements(5000, longest)),
              "$.inventory: 5000 elements with texts of up to 4155 bytes, those of the items above them included, are "
              "too much to be shown; 16777216 bytes in all are allowed");
    EXPECT_THAT(refusalOf(withElements(5000, "", longest)),
                StartsWith("$.inventory: 5000 elements with texts of up to "));
    EXPECT_THAT(refusalOf(withElements(3000, longest, longest)), HasSubstr(" to 8251 bytes"));
    // What is escaped in a document is longer there.
    EXPECT_THAT(refusalOf(withElements(3000, std::string(1000, '<'))), HasSubstr(" to 6059 bytes"));
}

TEST_F(TargetDescription, ALargeOneMayMakeMuchText) {
    std::string text = withElements(5000, std::string(4096, 'a'));
    text.insert(1, R"("comment": ")" + std::string(std::size_t(2) << 20U, 'a') + "\", ");
    expectServed(text);
}

TEST_F(TargetDescription, AFileOfMoreThan256MebibytesIsRefusedUnread) {
    const ScratchFolder folder;
    folder.write("target.json", "{}");
    std::error_code error;
    for (const auto& [size, reason] : {std::pair(std::uintmax_t(256) << 20U, "line 1, column 3: "),
                                       std::pair((std::uintmax_t(256) << 20U) + 1, "is larger than 256 MiB"),
                                       std::pair(std::uintmax_t(4) << 30U, "is larger than 256 MiB")}) {
        std::filesystem::resize_file(folder.path() / "target.json", size, error);
        if (error) {
            GTEST_SKIP() << "no room for a large file: " << error.message();
        }
        const KvEmulation::KvTServeResult result = KvEmulation::serve(folder.text());
        EXPECT_FALSE(result.served);
        EXPECT_THAT(result.error, StartsWith(folder.text() + "/target.json: " + reason));
    }
}

TEST_F(TargetDescription, ALongTextIsCutWhereItIsToldOf) {
    const std::string calls(98, 'a');
    EXPECT_THAT(refusalOf(R"({"faults": [{"call": ")" + calls + R"(aa"}]})"), EndsWith('"' + calls + "aa\""));
    EXPECT_THAT(refusalOf(R"({"faults": [{"call": ")" + calls + R"(aab"}]})"), EndsWith('"' + calls + "aa...\""));
    // The whole of the character that is cut.
    EXPECT_THAT(refusalOf(R"({"faults": [{"call": ")" + calls + "a\xC3\xA4" + R"("}]})"),
                EndsWith('"' + calls + "a...\""));
}

TEST_F(TargetDescription, WhatIsNoJsonIsRefusedWithLineAndColumn) {
    EXPECT_THAT(refusalOf("{\n  \"addresses\": [\"\xC3\xA4\", oops]\n}"), HasSubstr("line 2, column 22: "));
    EXPECT_THAT(refusalOf(""), HasSubstr("line 1, column 1: "));
    EXPECT_THAT(refusalOf("{}\n{}"), HasSubstr("line 2, column 1: "));
}

TEST_F(TargetDescription, AMissingFolderOrFileIsRefused) {
    const ScratchFolder folder;
    const KvEmulation::KvTServeResult missing = KvEmulation::serve(folder.text() + "/none");
    EXPECT_FALSE(missing.served);
    EXPECT_THAT(missing.error, StartsWith(folder.text() + "/none/target.json: cannot be opened: "));
    std::filesystem::create_directory(folder.path() / "target.json");
    const KvEmulation::KvTServeResult isFolder = KvEmulation::serve(folder.text() + "/");
    EXPECT_FALSE(isFolder.served);
    EXPECT_THAT(isFolder.error, StartsWith(folder.text() + "/target.json: cannot be opened: "));
}

TEST_F(TargetDescription, TwoElementsOfOneIdBelowOneBoardAreWarnedOfOnce) {
    TargetBuilder target;
    target.add(item("HCN").element(updateElement(4)).element(updateElement(4)).element(updateElement(4)));
    target.add(item("CN").element(updateElement(4)));
    const auto result = target.serve();
    EXPECT_THAT(result.warnings,
                ElementsAre(target.folder().text() + "/target.json: Several elements of HCN[1] have the ID 4, so that "
                                                     "updates of it are refused."));
}

TEST_F(TargetDescription, AnUpdateElementAndAFileSystemElementMayShareAnId) {
    TargetBuilder target;
    target.add(item("HCN").element(fileSystemElement(4, "a")).element(updateElement(4)));
    EXPECT_THAT(target.serve().warnings, IsEmpty());
}

TEST_F(TargetDescription, FileSystemElementsMayShareAnIdBesideAnUpdateElement) {
    const auto warningsOf = [](const std::vector<ItemBuilder>& elements) {
        TargetBuilder target;
        ItemBuilder node = item("HCN");
        for (const ItemBuilder& element : elements) {
            node.element(element);
        }
        target.add(std::move(node));
        return target.serve().warnings;
    };
    const ItemBuilder file = fileSystemElement(4, "a");
    const ItemBuilder otherFile = fileSystemElement(4, "b");
    const ItemBuilder firmware = updateElement(4);
    EXPECT_THAT(warningsOf({file, otherFile}), IsEmpty());
    EXPECT_THAT(warningsOf({file, otherFile, firmware}), IsEmpty());
    EXPECT_THAT(warningsOf({file, firmware, otherFile}), IsEmpty());
    EXPECT_THAT(warningsOf({firmware, file, otherFile}), IsEmpty());
    EXPECT_THAT(warningsOf({firmware, file, firmware}), SizeIs(1));
    EXPECT_THAT(warningsOf({file, firmware, otherFile, firmware}), SizeIs(1));
}

TEST_F(TargetDescription, AnUpdateBehaviourOfWhatIsNoElementIsWarnedOf) {
    TargetBuilder target;
    target.add(item("HCN").polls(2));
    EXPECT_THAT(target.serve().warnings,
                ElementsAre(target.folder().text() + "/target.json: HCN[1] is no element, so that its update "
                                                     "behaviour has no meaning."));
}

TEST_F(TargetDescription, NestingIsLimitedByJsonOnly) {
    // Each item takes two of the 256 levels, after that of the document.
    constexpr int depth = 127;
    std::string text = R"({"addresses": ["127.0.0.1"], "inventory": )";
    for (int level = 1; level < depth; ++level) {
        text += R"({"id": "SUB_BOARDS", "items": [)";
    }
    text += R"({"id": "UPDATE_INFO"})";
    for (int level = 1; level < depth; ++level) {
        text += "]}";
    }
    expectServed(text + "}");
    openRoot();
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, tree), 0U);
    int levels = 0;
    for (const KvCInventoryItem* item = tree; item != nullptr; item = item->getFirstSubItem()) {
        ++levels;
    }
    EXPECT_EQ(levels, depth);
    manager().deleteInventoryTree(tree);
    EXPECT_THAT(refusalOf(std::string(100000, '[')), HasSubstr("line 1, column "));
}

TEST_F(TargetDescription, ManySiblingsAreNoTrouble) {
    constexpr std::uint32_t count = 20000;
    TargetBuilder target;
    ItemBuilder node = item("HCN");
    for (std::uint32_t id = 1; id <= count; ++id) {
        node.element(item("UPDATE_ELEMENT").parameter("ID", std::uint64_t(id)).parameter("CHECKSUM_CRC32", id));
    }
    target.add(std::move(node));
    target.serve();
    openRoot();
    KvCInventoryItem* tree = nullptr;
    ASSERT_EQ(manager().scan(errors(), root, tree), 0U);
    const KvCInventoryItem* const info = tree->getItem(KvNInventoryIDs::HCN / KvNInventoryIDs::UPDATE_INFO);
    ASSERT_NE(info, nullptr);
    for (std::uint32_t id = 1; id <= count; ++id) {
        std::uint32_t checksum = 0;
        info->getItem(KvNInventoryIDs::UPDATE_ELEMENT[id])
            ->getValue(errors(), KvNInventoryIDs::CHECKSUM_CRC32, checksum);
        ASSERT_EQ(checksum, id);
    }
    manager().deleteInventoryTree(tree);
}

} // namespace
