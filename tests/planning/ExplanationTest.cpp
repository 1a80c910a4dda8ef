#include "Explanation.h"
#include "PlanningTest.h"

#include <gmock/gmock.h>

#include <ostream>

using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

class ExplanationTest : public PlanningTest {
protected:
    KvTExplanation explanationOf(std::size_t position) { return KvCExplainer(files()).explain(elementAt(position)); }
};

struct TestRow {
    const char* name;
    const char* entry;
    ElementBuilder element;
    KvEMatchTest failedTest;
    const char* archiveValue;
    const char* elementValue;

    friend void PrintTo(const TestRow& row, std::ostream* stream) { *stream << row.name; }
};

class ExplainedTest : public ExplanationTest, public testing::WithParamInterface<TestRow> {};

} // namespace

TEST_P(ExplainedTest, IsGivenWithBothValues) {
    archiveHas({GetParam().entry});
    targetHas(GetParam().element);
    plan();
    const KvTExplanation explanation = explanationOf(0);
    ASSERT_EQ(1U, explanation.tried.size());
    EXPECT_EQ(GetParam().failedTest, explanation.tried[0].failedTest);
    EXPECT_EQ(GetParam().archiveValue, explanation.tried[0].archiveValue);
    EXPECT_EQ(GetParam().elementValue, explanation.tried[0].elementValue);
    EXPECT_EQ(0U, explanation.otherBoardCount);
}

INSTANTIATE_TEST_SUITE_P(
    Tests, ExplainedTest,
    testing::Values(TestRow{"Variant", "'boardType': 'X', 'id': 1, 'boardVariant': 'B'", element("X", 1),
                            KvEMatchTest::boardVariant, "\"B\"", "null"},
                    TestRow{"VariantThatIsNull", "'boardType': 'X', 'id': 1, 'boardVariant': null",
                            element("X", 1).variant("A"), KvEMatchTest::boardVariant, "null", "\"A\""},
                    TestRow{"VariantThatIsNotStated", "'boardType': 'X', 'id': 1", element("X", 1).variant("A"),
                            KvEMatchTest::boardVariant, "null", "\"A\""},
                    TestRow{"Variants", "'boardType': 'X', 'id': 1, 'boardVariant': ['B', null, 'C']",
                            element("X", 1).variant("A"), KvEMatchTest::boardVariant, "[\"B\",null,\"C\"]", "\"A\""},
                    TestRow{"VariantOfAnyCharacters", "'boardType': 'X', 'id': 1, 'boardVariant': '\\u00fc\\n'",
                            element("X", 1).variant("\x01"), KvEMatchTest::boardVariant, "\"\xC3\xBC\\n\"",
                            "\"\\u0001\""},
                    TestRow{"BoardId", "'boardType': 'X', 'id': 1, 'boardId': [4, 5]", element("X", 1).boardId(6),
                            KvEMatchTest::boardId, "[4,5]", "6"},
                    TestRow{"BoardIdThatIsNotStated", "'boardType': 'X', 'id': 1", element("X", 1).boardId(6),
                            KvEMatchTest::boardId, "null", "6"},
                    TestRow{"Addressing", "'boardType': 'X', 'targetPath': '/a'", element("X", 1),
                            KvEMatchTest::addressing, "\"targetPath\"", "\"id\""},
                    TestRow{"AddressingOfAFile", "'boardType': 'X', 'id': 1", fileElement("X", "/a"),
                            KvEMatchTest::addressing, "\"id\"", "\"targetPath\""},
                    TestRow{"Id", "'boardType': 'X', 'id': 2", element("X", 1), KvEMatchTest::id, "2", "1"},
                    TestRow{"TargetPath", "'boardType': 'X', 'targetPath': '/a'", fileElement("X", "/b"),
                            KvEMatchTest::targetPath, "\"/a\"", "\"/b\""},
                    TestRow{"Hardware", "'boardType': 'X', 'id': 1, 'hwCompatibilityId': 7",
                            element("X", 1).hardware(8), KvEMatchTest::hwCompatibilityId, "7", "8"},
                    TestRow{"Software", "'boardType': 'X', 'id': 1, 'swCompatibilityId': [7, 9]",
                            element("X", 1).software(8), KvEMatchTest::swCompatibilityId, "[7,9]", "8"},
                    TestRow{"NoneOfTheChosenEntry", "'boardType': 'X', 'id': 1", element("X", 1), KvEMatchTest::none,
                            "null", "null"}),
    [](const auto& row) { return row.param.name; });

TEST_F(ExplanationTest, ListsTheEntriesForTheBoardTypeAndCountsTheOthers) {
    archiveHas({"'boardType': 'X', 'id': 1, 'boardVariant': 'B'", "'boardType': 'Y', 'id': 1",
                "'boardType': 'X', 'targetPath': '/a'", "'boardType': ['Y', 'X'], 'id': 2"});
    targetHas(element("X", 1));
    plan();
    const KvTExplanation explanation = explanationOf(0);
    ASSERT_EQ(3U, explanation.tried.size());
    EXPECT_EQ(0U, explanation.tried[0].fileIndex);
    EXPECT_EQ(2U, explanation.tried[1].fileIndex);
    EXPECT_EQ(3U, explanation.tried[2].fileIndex);
    EXPECT_EQ(3U, explanation.tried[2].descriptionIndex);
    EXPECT_EQ("a.bin", explanation.tried[2].fileName);
    EXPECT_EQ(1U, explanation.otherBoardCount);
}

TEST_F(ExplanationTest, EntriesBehindTheChosenOneAreNotTried) {
    archiveHas({"'boardType': 'Y', 'id': 1", "'boardType': 'X', 'id': 1", "'boardType': 'X', 'id': 1",
                "'boardType': 'Y', 'id': 1"});
    targetHas(element("X", 1));
    plan();
    const KvTExplanation explanation = explanationOf(0);
    ASSERT_EQ(1U, explanation.tried.size());
    EXPECT_EQ(1U, explanation.tried[0].fileIndex);
    EXPECT_EQ(1U, explanation.otherBoardCount);
}

TEST_F(ExplanationTest, TheFirstOfItsBoardsOfThisTypeDecides) {
    archiveHas({"'id': 1, 'boards': [{'boardType': 'Y', 'id': 3}, {'boardType': 'X', 'id': 4}, {'boardType': 'X'}]"});
    targetHas(element("X", 1));
    plan();
    const KvTExplanation explanation = explanationOf(0);
    ASSERT_EQ(1U, explanation.tried.size());
    EXPECT_EQ(KvEMatchTest::id, explanation.tried[0].failedTest);
    EXPECT_EQ("4", explanation.tried[0].archiveValue);
}

TEST_F(ExplanationTest, WithoutAnEntryForTheBoardTypeNoneIsTried) {
    archiveHas({"'boardType': 'Y', 'id': 1", "'boardType': 'Z', 'id': 1"});
    targetHas(element("X", 1));
    plan();
    EXPECT_THAT(explanationOf(0).tried, IsEmpty());
    EXPECT_EQ(2U, explanationOf(0).otherBoardCount);
}

TEST_F(ExplanationTest, AFileThatOnlyTheArchiveKnowsIsExplained) {
    archiveHas({"'boardType': 'X', 'targetPath': '/a'", "'boardType': 'X', 'targetPath': '/b'"});
    targetTakesFiles(fileElement("X", "*"));
    plan();
    ASSERT_EQ(2U, elements().size());
    const KvTExplanation explanation = explanationOf(1);
    EXPECT_EQ(1U, explanation.index);
    ASSERT_EQ(2U, explanation.tried.size());
    EXPECT_EQ(KvEMatchTest::targetPath, explanation.tried[0].failedTest);
    EXPECT_EQ("\"/a\"", explanation.tried[0].archiveValue);
    EXPECT_EQ("\"/b\"", explanation.tried[0].elementValue);
    EXPECT_EQ(KvEMatchTest::none, explanation.tried[1].failedTest);
}
