#include "ArchiveFixture.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::wstring wide(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

/// "ERROR: File entry 1 is invalid." and what follows.
std::wstring invalid(std::wstring_view what = L"") {
    return std::wstring(L"ERROR: File entry 1 is invalid.").append(what).append(L"\n");
}

const std::wstring accepted;
const std::wstring skipped = L"WARNING: File entry 1 is not supported. Ignoring this entry.\n";
const std::wstring mandatory = invalid(L" A mandatory property is missing or invalid.");
const std::wstring featureLevel = invalid(L" Property \"featureLevel\" is invalid.");
const std::wstring both = invalid(L" Properties \"id\" and \"targetPath\" must not be specified at the same time.");
const std::wstring neither = invalid(L" Either \"id\" or \"targetPath\" must be specified.");

/// Wordings that differ between an entry and an element of its "boards".
struct Wording {
    std::wstring type;
    std::wstring elements;
    std::wstring version;
    std::wstring mode;
};

Wording entryWording(std::string_view key) {
    const std::wstring property = L" Property \"" + wide(key) + L"\"";
    return {invalid(property + L" has an invalid value."), invalid(property + L" has invalid elements."),
            invalid(L" Property \"version\" is invalid."), invalid(L" Property \"mode\" is invalid.")};
}

Wording boardWording(std::string_view key, unsigned board) {
    const std::wstring property = L" Property \"" + wide(key) + L"\" of \"boards\"";
    const std::wstring number = std::to_wstring(board);
    return {invalid(property + L"-element " + number + L" has an invalid value."),
            invalid(property + L" element " + number + L" has invalid elements."),
            invalid(L" Property \"version\" of \"boards\" element " + number + L" is invalid."),
            invalid(L" Property \"mode\" of \"boards\" element " + number + L" is invalid.")};
}

std::wstring badBoard(unsigned board) {
    return invalid(L" \"boards\"-entry " + std::to_wstring(board) + L" is invalid.");
}

std::wstring forbidden(unsigned board) {
    return invalid(L" \"boards\" element " + std::to_wstring(board) +
                   L" is invalid. Properties \"version\", \"checksumCrc32\" and \"mode\" must not be specified inside "
                   L"a \"boards\" element.");
}

/// An element of "files" and all that the reading says about it; nothing when it is accepted.
struct Row {
    std::string element;
    std::wstring message;
};

Row row(const ObjectText& entry, std::wstring message) {
    return {entry.text(), std::move(message)};
}

/// The element stands at index 1, after a good entry.
class EntryRules : public ArchiveTest {
protected:
    void expect(const Row& row) {
        SCOPED_TRACE(row.element);
        const bool isRead = readDescription(ArchiveBuilder().entry(goodEntry()).entry(row.element));
        EXPECT_EQ(row.message, messages());
        EXPECT_EQ(row.message == accepted || row.message == skipped, isRead);
        EXPECT_EQ(row.message == accepted ? 2U : 1U, archive().files().size());
        EXPECT_EQ(row.message == skipped ? 1U : 0U, archive().ignoredEntryCount());
    }
    void expect(const std::vector<Row>& rows) {
        for (const Row& one : rows) {
            expect(one);
        }
    }
};

TEST_F(EntryRules, AnElementThatIsNoObjectIsInvalid) {
    expect({{"null", invalid()},
            {"1", invalid()},
            {"\"a.bin\"", invalid()},
            {"true", invalid()},
            {"[]", invalid()},
            {joined("[", goodEntry().text(), "]"), invalid()}});
}

TEST_F(EntryRules, FeatureLevelsUpTo2AreAccepted) {
    for (const char* level : {"0", "1", "2"}) {
        expect(row(goodEntry().set("featureLevel", level), accepted));
    }
}

TEST_F(EntryRules, AFeatureLevelMustBeUnsigned) {
    for (const char* level :
         {"-1", "1.5", "1.0", "1e0", "\"1\"", "null", "true", "[1]", "{}", "18446744073709551616"}) {
        expect(row(goodEntry().set("featureLevel", level), featureLevel));
    }
}

TEST_F(EntryRules, AHigherFeatureLevelSkipsTheEntry) {
    for (const char* level : {"3", "4294967296", "4294967297", "18446744073709551615"}) {
        expect(row(goodEntry().set("featureLevel", level), skipped));
    }
}

TEST_F(EntryRules, NothingElseOfASkippedEntryIsLookedAt) {
    expect(
        {{R"({"featureLevel": 3})", skipped},
         row(goodEntry().set("featureLevel", "3").set("mode", "1").set("name", "null").set("boards", "[]"), skipped)});
}

TEST_F(EntryRules, MandatoryPropertiesMustBeThereAndRight) {
    expect({{"{}", mandatory},
            row(goodEntry().remove("name"), mandatory),
            row(goodEntry().set("name", "null"), mandatory),
            row(goodEntry().set("name", "1"), mandatory),
            row(goodEntry().set("name", "[\"a.bin\"]"), mandatory),
            row(goodEntry().set("name", "\"\""), accepted),
            row(goodEntry().remove("sequence"), mandatory),
            row(goodEntry().set("sequence", "null"), mandatory),
            row(goodEntry().set("sequence", "\"1\""), mandatory),
            row(goodEntry().set("sequence", "-1"), mandatory),
            row(goodEntry().set("sequence", "1.5"), mandatory),
            row(goodEntry().set("sequence", "1.0"), mandatory),
            row(goodEntry().set("sequence", "18446744073709551616"), mandatory),
            row(goodEntry().set("sequence", "18446744073709551615"), accepted),
            row(goodEntry().set("sequence", "0"), accepted)});
}

TEST_F(EntryRules, ExactlyOneOfBoardTypeAndBoardsIsNeeded) {
    const std::string boards = joined("[", goodBoard().text(), "]");
    expect({row(goodEntry().remove("boardType"), mandatory), row(goodEntry().set("boards", boards), mandatory),
            row(goodEntry().set("boardType", "null").set("boards", boards), mandatory),
            row(goodEntry().set("boards", "null"), mandatory),
            row(goodEntry().remove("boardType").set("boards", boards), accepted)});
}

TEST_F(EntryRules, BoardsMustBeAnArrayThatIsNotEmpty) {
    for (const char* boards : {"[]", "null", "{}", "\"QB\"", "1", "true"}) {
        expect(row(goodEntry().remove("boardType").set("boards", boards), mandatory));
    }
}

// Types.

enum class Shape { null, boolean, unsignedNumber, signedNumber, floatingNumber, text, array, object };

struct Sample {
    Shape shape;
    std::string_view value;
};

constexpr std::array samples = {Sample{Shape::null, "null"},          Sample{Shape::boolean, "false"},
                                Sample{Shape::unsignedNumber, "7"},   Sample{Shape::signedNumber, "-7"},
                                Sample{Shape::floatingNumber, "7.0"}, Sample{Shape::text, "\"1.2\""},
                                Sample{Shape::array, "[]"},           Sample{Shape::object, "{}"}};

struct TypedKey {
    std::string_view key;
    std::vector<Shape> allowed;
};

/// In the order in which the types are tested.
const std::vector<TypedKey>& typedKeys() {
    static const std::vector<TypedKey> all = {{"boardType", {Shape::text, Shape::array}},
                                              {"boardVariant", {Shape::null, Shape::text, Shape::array}},
                                              {"boardId", {Shape::unsignedNumber, Shape::array}},
                                              {"id", {Shape::unsignedNumber}},
                                              {"targetPath", {Shape::text}},
                                              {"hwCompatibilityId", {Shape::unsignedNumber, Shape::array}},
                                              {"swCompatibilityId", {Shape::unsignedNumber, Shape::array}},
                                              {"version", {Shape::text, Shape::null}},
                                              {"checksumCrc32", {Shape::unsignedNumber}},
                                              {"mode", {Shape::text}}};
    return all;
}

bool isAllowed(const TypedKey& key, Shape shape) {
    return std::find(key.allowed.begin(), key.allowed.end(), shape) != key.allowed.end();
}

/// The value of a sample, as `key` can hold it when it may be of that shape at all.
std::string_view valueFor(const TypedKey& key, const Sample& sample) {
    return key.key == "mode" && sample.shape == Shape::text ? "\"upgrade\"" : sample.value;
}

TEST_F(EntryRules, EveryPropertyOfAnEntryHasItsTypes) {
    for (const TypedKey& key : typedKeys()) {
        for (const Sample& sample : samples) {
            ObjectText entry = goodEntry();
            if (key.key == "targetPath") {
                entry.remove("id");
            }
            entry.set(key.key, valueFor(key, sample));
            expect(row(entry, isAllowed(key, sample.shape) ? accepted : entryWording(key.key).type));
        }
    }
}

TEST_F(EntryRules, EveryPropertyOfABoardHasItsTypes) {
    for (const TypedKey& key : typedKeys()) {
        const bool belongsToEntry = key.key == "version" || key.key == "checksumCrc32" || key.key == "mode";
        for (const Sample& sample : samples) {
            ObjectText board = goodBoard();
            if (key.key == "targetPath") {
                board.remove("id");
            }
            board.set(key.key, valueFor(key, sample));
            const std::string good =
                key.key == "targetPath" ? R"({"boardType": "QB", "targetPath": "x"})" : goodBoard().text();
            const std::wstring rightType = belongsToEntry ? forbidden(1) : accepted;
            expect(row(entryWithBoards(joined(good, ",", board.text())),
                       isAllowed(key, sample.shape) ? rightType : boardWording(key.key, 1).type));
        }
    }
}

/// A value that the type of no property allows.
constexpr std::string_view neverAllowed = "{}";

TEST_F(EntryRules, OfTwoWrongTypesTheLaterPropertyIsNamed) {
    for (std::size_t first = 0; first < typedKeys().size(); ++first) {
        for (std::size_t second = first + 1; second < typedKeys().size(); ++second) {
            const std::string_view earlier = typedKeys()[first].key;
            const std::string_view later = typedKeys()[second].key;
            // The order of the keys in the description does not matter.
            for (const bool laterKeyFirst : {false, true}) {
                ObjectText entry({{"name", "\"a\""}, {"sequence", "1"}});
                entry.set(laterKeyFirst ? later : earlier, neverAllowed);
                entry.set(laterKeyFirst ? earlier : later, neverAllowed);
                if (earlier != "boardType") {
                    entry.set("boardType", "\"QB\"");
                }
                expect(row(entry, entryWording(later).type));

                ObjectText board;
                board.set(laterKeyFirst ? later : earlier, neverAllowed);
                board.set(laterKeyFirst ? earlier : later, neverAllowed);
                if (earlier != "boardType") {
                    board.set("boardType", "\"QB\"");
                }
                expect(row(entryWithBoards(board.text()), boardWording(later, 0).type));
            }
        }
    }
}

TEST_F(EntryRules, OfAllWrongTypesTheModeIsNamed) {
    ObjectText entry({{"name", "\"a\""}, {"sequence", "1"}});
    for (const TypedKey& key : typedKeys()) {
        entry.set(key.key, neverAllowed);
    }
    expect(row(entry, entryWording("mode").type));
}

TEST_F(EntryRules, TypesOfPropertiesThatOthersExcludeAreTestedAllTheSame) {
    expect({row(goodEntry().set("targetPath", "1"), entryWording("targetPath").type),
            row(goodEntry().remove("id").set("mode", "1"), entryWording("mode").type)});
}

// Elements of arrays.

TEST_F(EntryRules, ArraysMayBeEmpty) {
    for (const char* key : {"boardType", "boardVariant", "boardId", "hwCompatibilityId", "swCompatibilityId"}) {
        expect(row(goodEntry().set(key, "[]"), accepted));
        expect(row(entryWithBoards(goodBoard().set(key, "[]").text()), accepted));
    }
}

struct ArrayKey {
    std::string_view key;
    std::string_view goodItems;
    std::vector<std::string_view> badItems;
};

/// In the order in which the elements are tested.
const std::vector<ArrayKey>& arrayKeys() {
    static const std::vector<ArrayKey> all = {
        {"boardType", R"("A", "")", {"null", "1", "true", "[]", "{}"}},
        {"boardVariant", R"("A", null, "")", {"1", "-1", "false", "[null]", "{}"}},
        {"boardId", "0, 4294967296", {"null", "-1", "1.0", "\"1\"", "true", "[1]", "{}"}},
        {"hwCompatibilityId", "3, 3", {"null", "-1", "1.5", "\"1\"", "false", "[]", "{}"}},
        {"swCompatibilityId", "18446744073709551615", {"null", "-1", "18446744073709551616", "\"1\"", "[]", "{}"}}};
    return all;
}

TEST_F(EntryRules, ElementsOfArraysHaveTheirTypesToo) {
    for (const ArrayKey& key : arrayKeys()) {
        expect(row(goodEntry().set(key.key, joined("[", key.goodItems, "]")), accepted));
        expect(row(entryWithBoards(goodBoard().set(key.key, joined("[", key.goodItems, "]")).text()), accepted));
        for (const std::string_view bad : key.badItems) {
            const std::array arrays = {joined("[", bad, "]"), joined("[", key.goodItems, ", ", bad, "]"),
                                       joined("[", bad, ", ", key.goodItems, "]")};
            for (const std::string& array : arrays) {
                expect(row(goodEntry().set(key.key, array), entryWording(key.key).elements));
                expect(row(entryWithBoards(joined(goodBoard().text(), ",", goodBoard().set(key.key, array).text())),
                           boardWording(key.key, 1).elements));
            }
        }
    }
}

TEST_F(EntryRules, OfTwoBadArraysTheEarlierPropertyIsNamed) {
    for (std::size_t first = 0; first < arrayKeys().size(); ++first) {
        for (std::size_t second = first + 1; second < arrayKeys().size(); ++second) {
            const std::string_view earlier = arrayKeys()[first].key;
            const std::string_view later = arrayKeys()[second].key;
            expect(row(goodEntry().set(later, "[{}]").set(earlier, "[{}]"), entryWording(earlier).elements));
            expect(row(entryWithBoards(goodBoard().set(later, "[{}]").set(earlier, "[{}]").text()),
                       boardWording(earlier, 0).elements));
        }
    }
}

// Version and mode.

TEST_F(EntryRules, AVersionMustBeNullOrAVersionThatIsNotZero) {
    for (const char* version : {"null", R"("1.0")", R"("0.0.0.0.1")", R"("23.2a12")"}) {
        expect(row(goodEntry().set("version", version), accepted));
    }
    for (const char* version :
         {R"("")", R"("0")", R"("0.0")", R"("x")", R"("1.0.")", R"("1.0-beta")", R"("300.1")", R"("1.0\u0000junk")"}) {
        expect(row(goodEntry().set("version", version), entryWording("version").version));
        expect(row(entryWithBoards(joined(goodBoard().text(), ",", goodBoard().set("version", version).text())),
                   boardWording("version", 1).version));
    }
}

TEST_F(EntryRules, AModeMustBeStandardOrUpgradeToTheLetter) {
    for (const char* mode : {R"("standard")", R"("upgrade")"}) {
        expect(row(goodEntry().set("mode", mode), accepted));
    }
    for (const char* mode : {R"("")", R"("Upgrade")", R"("UPGRADE")", R"("Standard")", R"("upgrade ")", R"(" upgrade")",
                             R"("upgrad")", R"("standards")", R"("upgrade\u0000")", R"("none")"}) {
        expect(row(goodEntry().set("mode", mode), entryWording("mode").mode));
        expect(row(entryWithBoards(joined(goodBoard().text(), ",", goodBoard().set("mode", mode).text())),
                   boardWording("mode", 1).mode));
    }
}

TEST_F(EntryRules, WhatBelongsToTheEntryMustNotStandInABoard) {
    expect({row(entryWithBoards(goodBoard().set("version", "\"1.0\"").text()), forbidden(0)),
            row(entryWithBoards(goodBoard().set("version", "null").text()), forbidden(0)),
            row(entryWithBoards(goodBoard().set("checksumCrc32", "1").text()), forbidden(0)),
            row(entryWithBoards(goodBoard().set("mode", R"("standard")").text()), forbidden(0)),
            row(entryWithBoards(goodBoard().set("mode", R"("upgrade")").text()), forbidden(0)),
            row(entryWithBoards(
                    goodBoard().set("version", "null").set("checksumCrc32", "1").set("mode", R"("upgrade")").text()),
                forbidden(0)),
            row(entryWithBoards(joined(goodBoard().text(), ",", goodBoard().text(), ",",
                                       goodBoard().set("checksumCrc32", "0").text())),
                forbidden(2))});
}

// Boards.

TEST_F(EntryRules, ABoardMustBeAnObjectWithABoardType) {
    for (const char* board : {"null", "1", "\"QB\"", "true", "[]", "[\"boardType\"]", "{}", R"({"id": 5})",
                              R"({"BoardType": "QB", "id": 5})"}) {
        expect(row(entryWithBoards(board), badBoard(0)));
        expect(row(entryWithBoards(joined(goodBoard().text(), ", ", board)), badBoard(1)));
    }
}

TEST_F(EntryRules, ABoardTypeOfNullIsThereButOfAWrongType) {
    expect(row(entryWithBoards(R"({"boardType": null})"), boardWording("boardType", 0).type));
}

TEST_F(EntryRules, BoardsOfABoardAreIgnored) {
    expect(row(entryWithBoards(goodBoard().set("boards", "[{\"targetPath\": 1}]").text()), accepted));
}

// Identifier and target path.

TEST_F(EntryRules, AnEntryNeedsAnIdOrATargetPath) {
    expect({row(goodEntry(), accepted), row(goodEntry().remove("id").set("targetPath", "\"/f\""), accepted),
            row(goodEntry().remove("id").set("targetPath", "\"\""), accepted), row(goodEntry().remove("id"), neither),
            row(goodEntry().set("targetPath", "\"/f\""), both)});
}

TEST_F(EntryRules, AnEntryWhoseEveryBoardHasOneNeedsNoneItself) {
    const std::string typeOnly = R"({"boardType": "QC"})";
    expect({row(entryWithBoards(goodBoard().text()), accepted),
            row(entryWithBoards(joined(goodBoard().text(), ", ", goodBoard().text())), accepted),
            row(entryWithBoards(typeOnly), neither),
            row(entryWithBoards(joined(goodBoard().text(), ", ", typeOnly)), neither),
            row(entryWithBoards(joined(typeOnly, ", ", goodBoard().text())), neither),
            row(entryWithBoards(joined(typeOnly, ", ", goodBoard().text())).set("id", "9"), accepted),
            row(entryWithBoards(typeOnly).set("id", "9"), accepted),
            row(entryWithBoards(typeOnly).set("targetPath", "\"/f\""), accepted),
            row(entryWithBoards(goodBoard().text()).set("id", "9"), accepted)});
}

TEST_F(EntryRules, IdAndTargetPathExcludeEachOtherWhereverTheyStand) {
    const std::string withId = goodBoard().text();
    const std::string withPath = R"({"boardType": "QC", "targetPath": "/f"})";
    const std::string withBoth = R"({"boardType": "QC", "id": 1, "targetPath": "/f"})";
    expect({row(entryWithBoards(joined(withId, ", ", withPath)), both),
            row(entryWithBoards(joined(withPath, ", ", withId)), both), row(entryWithBoards(withBoth), both),
            row(entryWithBoards(withId).set("targetPath", "\"/f\""), both),
            row(entryWithBoards(withPath).set("id", "1"), both), row(entryWithBoards(withPath), accepted),
            row(entryWithBoards(withPath).set("targetPath", "\"/g\""), accepted),
            row(entryWithBoards(R"({"boardType": "QC"})").set("id", "1").set("targetPath", "\"/f\""), both)});
}

// Which message wins.

/// What is wrong with an entry, in the order in which it is found; a later one is added to an earlier one.
struct Flaw {
    const char* name;
    void (*addTo)(ObjectText&);
    std::wstring message;
};

const std::vector<Flaw>& entryFlaws() {
    static const std::vector<Flaw> all = {
        {"featureLevel", [](ObjectText& e) { e.set("featureLevel", "-1"); }, featureLevel},
        {"mandatory", [](ObjectText& e) { e.remove("name"); }, mandatory},
        {"type", [](ObjectText& e) { e.set("boardVariant", "1"); }, entryWording("boardVariant").type},
        {"texts", [](ObjectText& e) { e.set("boardType", "[1]"); }, entryWording("boardType").elements},
        {"numbers", [](ObjectText& e) { e.set("boardId", "[null]"); }, entryWording("boardId").elements},
        {"version", [](ObjectText& e) { e.set("version", "\"\""); }, entryWording("version").version},
        {"mode", [](ObjectText& e) { e.set("mode", "\"\""); }, entryWording("mode").mode},
        {"both", [](ObjectText& e) { e.set("targetPath", "\"/f\""); }, both}};
    return all;
}

TEST_F(EntryRules, OfTwoFlawsOfAnEntryTheEarlierRuleIsReported) {
    for (std::size_t first = 0; first < entryFlaws().size(); ++first) {
        for (std::size_t second = first; second < entryFlaws().size(); ++second) {
            SCOPED_TRACE(std::string(entryFlaws()[first].name) + " and " + entryFlaws()[second].name);
            ObjectText entry = goodEntry();
            entryFlaws()[second].addTo(entry);
            entryFlaws()[first].addTo(entry);
            expect(row(entry, entryFlaws()[first].message));
        }
    }
}

const std::vector<Flaw>& boardFlaws() {
    static const std::vector<Flaw> all = {
        {"type", [](ObjectText& b) { b.set("swCompatibilityId", "null"); }, boardWording("swCompatibilityId", 1).type},
        {"texts", [](ObjectText& b) { b.set("boardVariant", "[1]"); }, boardWording("boardVariant", 1).elements},
        {"numbers", [](ObjectText& b) { b.set("hwCompatibilityId", "[-1]"); },
         boardWording("hwCompatibilityId", 1).elements},
        {"version", [](ObjectText& b) { b.set("version", "\"\""); }, boardWording("version", 1).version},
        {"mode", [](ObjectText& b) { b.set("mode", "\"\""); }, boardWording("mode", 1).mode},
        {"forbidden", [](ObjectText& b) { b.set("checksumCrc32", "1"); }, forbidden(1)},
        {"both", [](ObjectText& b) { b.set("targetPath", "\"/f\""); }, both}};
    return all;
}

TEST_F(EntryRules, OfTwoFlawsOfABoardTheEarlierRuleIsReported) {
    for (std::size_t first = 0; first < boardFlaws().size(); ++first) {
        for (std::size_t second = first; second < boardFlaws().size(); ++second) {
            SCOPED_TRACE(std::string(boardFlaws()[first].name) + " and " + boardFlaws()[second].name);
            ObjectText board = goodBoard();
            boardFlaws()[second].addTo(board);
            boardFlaws()[first].addTo(board);
            expect(row(entryWithBoards(joined(goodBoard().text(), ", ", board.text())), boardFlaws()[first].message));
        }
    }
}

TEST_F(EntryRules, TheEntryItselfIsLookedAtBeforeItsBoards) {
    const ObjectText entry = entryWithBoards("1");
    expect({row(ObjectText(entry).set("featureLevel", "null"), featureLevel),
            row(ObjectText(entry).remove("sequence"), mandatory),
            row(ObjectText(entry).set("id", "-1"), entryWording("id").type),
            row(ObjectText(entry).set("boardId", "[-1]"), entryWording("boardId").elements),
            row(ObjectText(entry).set("version", "\"0\""), entryWording("version").version),
            row(ObjectText(entry).set("mode", "\"0\""), entryWording("mode").mode)});
}

TEST_F(EntryRules, BoardsAreLookedAtOneAfterTheOtherBeforeTheAddressRules) {
    const std::string withPath = R"({"boardType": "QC", "targetPath": "/f"})";
    expect({row(entryWithBoards(joined(goodBoard().set("version", "null").text(), ", 1")), forbidden(0)),
            row(entryWithBoards(joined("1, ", goodBoard().set("id", "null").text())), badBoard(0)),
            row(entryWithBoards(joined(goodBoard().text(), ", ", withPath, ", {}")), badBoard(2)),
            row(entryWithBoards(joined(goodBoard().text(), ", ", withPath, ", ", goodBoard().set("id", "null").text())),
                boardWording("id", 2).type),
            row(entryWithBoards(R"({"boardType": "QB"}, {"boardType": "QB", "mode": "upgrade"})"), forbidden(1))});
}

TEST_F(EntryRules, IdAndTargetPathTogetherAreReportedBeforeABoardWithoutBoth) {
    expect(row(entryWithBoards(R"({"boardType": "A", "id": 1}, {"boardType": "B", "targetPath": "/f"},
                                  {"boardType": "C"})"),
               both));
}

} // namespace
