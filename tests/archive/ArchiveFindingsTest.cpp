#include "ArchiveFindings.h"

#include "ArchiveFixture.h"
#include "BinaryFile.h"
#include "CollectingFindings.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <vector>

bool operator==(const KvTArchiveFinding& a, const KvTArchiveFinding& b) {
    return a.rule == b.rule && a.entry == b.entry && a.board == b.board && a.property == b.property && a.item == b.item;
}

void PrintTo(const KvTArchiveFinding& finding, std::ostream* out) {
    *out << "rule " << static_cast<int>(finding.rule) << ", entry " << finding.entry << ", board " << finding.board
         << ", " << propertyKey(finding.property) << ", item " << finding.item;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Rule = KvEArchiveRule;
using Property = KvEProperty;

class ArchiveFindings : public ArchiveTest {
protected:
    /// What a checking tool finds in a description; true when it is accepted.
    bool check(const ArchiveBuilder& builder) {
        writeFile("archive.json", builder.text());
        return check(findings_);
    }
    bool check(KvCArchiveFindings& findings) {
        forgetMessages();
        return archive().parseDescription(pathOf(L"archive.json"), findings);
    }
    [[nodiscard]] const std::vector<KvTArchiveFinding>& errors() const { return findings_.errors(); }
    CollectingFindings& findings() { return findings_; }

private:
    CollectingFindings findings_{writer()};
};

TEST_F(ArchiveFindings, NothingIsFoundInAGoodDescription) {
    EXPECT_TRUE(check(ArchiveBuilder().entry(goodEntry())));
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(0U, findings().errorCount());
}

TEST_F(ArchiveFindings, AFindingThatConcernsNoEntrySaysSo) {
    const KvTArchiveFinding finding{Rule::infoIsObject};
    EXPECT_EQ(0xFFFFFFFFU, finding.entry);
    EXPECT_EQ(-1, finding.board);
}

TEST_F(ArchiveFindings, AFileThatIsMissingIsOneFinding) {
    EXPECT_FALSE(check(findings()));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::descriptionFileOpens}));
}

TEST_F(ArchiveFindings, AFileThatIsNotJsonIsOneFinding) {
    writeFile("archive.json", "{");
    EXPECT_FALSE(check(findings()));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::descriptionIsJson}));
}

TEST_F(ArchiveFindings, EveryFlawOfTheInfoBlockIsFound) {
    EXPECT_FALSE(check(ArchiveBuilder()
                           .info("formatVersion", R"("2.0")")
                           .info("archiveVersion", R"("0.0")")
                           .info("productName", "1")
                           .info("archiveVariant", "null")
                           .withoutInfo("archiveName")
                           .withoutRoot("files")));
    EXPECT_THAT(
        errors(),
        ElementsAre(KvTArchiveFinding{Rule::formatVersionIsSupported}, KvTArchiveFinding{Rule::archiveVersionIsVersion},
                    KvTArchiveFinding{Rule::productNameIsString}, KvTArchiveFinding{Rule::archiveVariantIsString},
                    KvTArchiveFinding{Rule::archiveNameIsString}, KvTArchiveFinding{Rule::filesIsArray}));
    EXPECT_EQ(L"ERROR: This firmware archive cannot be processed by the update tool.\n"
              L"       Do not use firmware archives with update tools from different Korvel releases.\n"
              L"ERROR: The archive description file is corrupt. \"archiveVersion\" is invalid.\n"
              L"ERROR: The archive description file is corrupt. \"productName\" is missing or invalid.\n"
              L"ERROR: The archive description file is corrupt. \"archiveVariant\" is invalid.\n"
              L"ERROR: The archive description file is corrupt. \"archiveName\" is missing or invalid.\n"
              L"ERROR: The archive description file is corrupt. Property \"files\" is missing or invalid.\n",
              messages());
}

TEST_F(ArchiveFindings, AVersionOfTheInfoBlockIsOneFinding) {
    EXPECT_FALSE(check(ArchiveBuilder().info("formatVersion", R"("0.0")").info("archiveVersion", "1")));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::formatVersionIsVersion},
                                      KvTArchiveFinding{Rule::archiveVersionIsString}));
    EXPECT_FALSE(check(ArchiveBuilder().info("formatVersion", "1")));
    EXPECT_EQ(Rule::formatVersionIsString, errors().back().rule);
}

TEST_F(ArchiveFindings, EntriesAreLookedAtWithoutAnInfoBlockToo) {
    EXPECT_FALSE(check(ArchiveBuilder().withoutRoot("info").entry("1").entry(goodEntry())));
    EXPECT_THAT(errors(),
                ElementsAre(KvTArchiveFinding{Rule::infoIsObject}, KvTArchiveFinding{Rule::entryIsObject, 0}));
    EXPECT_EQ(1U, archive().files().size());
}

TEST_F(ArchiveFindings, ARootThatIsNoObjectLacksBothItsParts) {
    writeFile("archive.json", "[]");
    EXPECT_FALSE(check(findings()));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::infoIsObject}, KvTArchiveFinding{Rule::filesIsArray}));
}

TEST_F(ArchiveFindings, EveryEntryIsLookedAt) {
    EXPECT_FALSE(check(ArchiveBuilder()
                           .entry(goodEntry().set("mode", "\"\""))
                           .entry(goodEntry())
                           .entry(R"({"featureLevel": 3})")
                           .entry("{}")
                           .entry(goodEntry().remove("id"))));
    EXPECT_THAT(errors(),
                ElementsAre(KvTArchiveFinding{Rule::modeIsKnown, 0, -1, Property::mode},
                            KvTArchiveFinding{Rule::mandatoryProperties, 3}, KvTArchiveFinding{Rule::idOrTargetPath, 3},
                            KvTArchiveFinding{Rule::idOrTargetPath, 4}));
    EXPECT_THAT(findings().warnings(), ElementsAre(KvTArchiveFinding{Rule::featureLevelIsSupported, 2}));
    EXPECT_EQ(1U, archive().files().size());
    EXPECT_EQ(1U, archive().ignoredEntryCount());
}

TEST_F(ArchiveFindings, EveryFlawOfAnEntryIsFoundInTheOrderOfTheReports) {
    EXPECT_FALSE(check(ArchiveBuilder().entry(goodEntry()
                                                  .set("featureLevel", "\"2\"")
                                                  .remove("name")
                                                  .set("boardVariant", "{}")
                                                  .set("targetPath", "1")
                                                  .set("checksumCrc32", "-1")
                                                  .set("boardType", "[1]")
                                                  .set("boardId", "[1, 2, null, -1]")
                                                  .set("version", "\"x\"")
                                                  .set("mode", "\"x\""))));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::featureLevelIsUnsigned, 0},
                                      KvTArchiveFinding{Rule::mandatoryProperties, 0},
                                      KvTArchiveFinding{Rule::propertyType, 0, -1, Property::checksumCrc32},
                                      KvTArchiveFinding{Rule::propertyType, 0, -1, Property::targetPath},
                                      KvTArchiveFinding{Rule::propertyType, 0, -1, Property::boardVariant},
                                      KvTArchiveFinding{Rule::propertyElements, 0, -1, Property::boardType, 0},
                                      KvTArchiveFinding{Rule::propertyElements, 0, -1, Property::boardId, 2},
                                      KvTArchiveFinding{Rule::versionIsVersion, 0, -1, Property::version},
                                      KvTArchiveFinding{Rule::modeIsKnown, 0, -1, Property::mode},
                                      KvTArchiveFinding{Rule::idOrTargetPathNotBoth, 0}));
}

TEST_F(ArchiveFindings, EveryBoardIsLookedAt) {
    EXPECT_FALSE(check(ArchiveBuilder().entry(entryWithBoards(
        joined("null, ", goodBoard().remove("boardType").set("boardId", "-1").text(), ", ", goodBoard().text(), ", ",
               goodBoard().set("version", "\"0\"").set("swCompatibilityId", "[{}]").text())))));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::boardIsObjectWithType, 0, 0},
                                      KvTArchiveFinding{Rule::boardIsObjectWithType, 0, 1},
                                      KvTArchiveFinding{Rule::propertyType, 0, 1, Property::boardId},
                                      KvTArchiveFinding{Rule::propertyElements, 0, 3, Property::swCompatibilityId, 0},
                                      KvTArchiveFinding{Rule::versionIsVersion, 0, 3, Property::version},
                                      KvTArchiveFinding{Rule::boardHasNoEntryProperties, 0, 3}));
}

TEST_F(ArchiveFindings, ABoardThatIsNoObjectIsNotAskedForAnAddress) {
    EXPECT_FALSE(check(ArchiveBuilder().entry(entryWithBoards("1, []"))));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::boardIsObjectWithType, 0, 0},
                                      KvTArchiveFinding{Rule::boardIsObjectWithType, 0, 1}));
}

TEST_F(ArchiveFindings, ABoardWithoutItsTypeIsAskedForAnAddress) {
    EXPECT_FALSE(check(ArchiveBuilder().entry(entryWithBoards("{}"))));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::boardIsObjectWithType, 0, 0},
                                      KvTArchiveFinding{Rule::idOrTargetPath, 0}));
}

TEST_F(ArchiveFindings, TheFirstMessageIsThatOfTheReader) {
    ArchiveBuilder builder;
    builder.info("productName", "1").entry("1").entry("{}");
    EXPECT_FALSE(check(builder));
    const std::wstring all = messages();
    EXPECT_FALSE(readDescription(builder));
    EXPECT_EQ(messages(), all.substr(0, messages().size()));
    EXPECT_LT(messages().size(), all.size());
}

TEST_F(ArchiveFindings, TheReadingEndsWhenTheFindingsHaveEnough) {
    const std::string text = ArchiveBuilder().info("archiveName", "1").entry("1").entry("{}").entry("2").text();
    writeFile("archive.json", text);
    EXPECT_FALSE(check(findings()));
    const std::wstring all = messages();
    ASSERT_EQ(5U, errors().size());
    for (std::size_t enough = 1; enough <= 5; ++enough) {
        CollectingFindings limited(writer(), enough);
        EXPECT_FALSE(check(limited));
        EXPECT_THAT(limited.errors(), testing::ElementsAreArray(
                                          errors().begin(), errors().begin() + static_cast<std::ptrdiff_t>(enough)));
        EXPECT_EQ(messages(), all.substr(0, messages().size()));
    }
}

TEST_F(ArchiveFindings, ASecondDescriptionIsJudgedByItself) {
    EXPECT_FALSE(check(ArchiveBuilder().entry("1")));
    EXPECT_TRUE(check(ArchiveBuilder().entry(goodEntry())));
    EXPECT_EQ(1U, findings().errorCount());
}

TEST_F(ArchiveFindings, EveryUpdateFileThatIsNeededIsLookedAt) {
    const auto entry = [](std::string_view name) { return goodEntry().set("name", name).remove("checksumCrc32"); };
    writeFile("image", imageFile(21).bytes());
    writeFile("readme", "text");
    ASSERT_TRUE(check(ArchiveBuilder()
                          .entry(R"({"featureLevel": 3})")
                          .entry(entry("\"missing\""))
                          .entry(entry("\"image\""))
                          .entry(entry("\"readme\""))
                          .entry(entry("\"image\""))));
    forgetMessages();
    EXPECT_FALSE(archive().completeFromUpdateFiles(findings()));
    EXPECT_THAT(errors(), ElementsAre(KvTArchiveFinding{Rule::updateFileExists, 1},
                                      KvTArchiveFinding{Rule::updateFileHasChecksum, 3}));
    EXPECT_EQ(L"ERROR: Cannot read checksum from update file. '" + pathOf(L"missing") +
                  L"' not found.\n"
                  L"ERROR: Cannot read checksum from update file readme.\n"
                  L"2 update files needed to be opened to get parameters not contained in the description file.\n\n",
              messages());
    EXPECT_TRUE(file(0).fileMissing);
    EXPECT_EQ(21U, file(3).checksumCrc32);
}

TEST_F(ArchiveFindings, AnUnreadableUpdateFileEndsTheCompletionWhenTheFindingsHaveEnough) {
    ASSERT_TRUE(check(ArchiveBuilder()
                          .entry(goodEntry().set("name", "\"missing\"").remove("checksumCrc32"))
                          .entry(goodEntry().set("name", "\"missing too\"").remove("checksumCrc32"))));
    CollectingFindings limited(writer(), 1);
    EXPECT_FALSE(archive().completeFromUpdateFiles(limited));
    EXPECT_THAT(limited.errors(), ElementsAre(KvTArchiveFinding{Rule::updateFileExists, 0}));
    EXPECT_FALSE(file(1).fileMissing);
}

TEST_F(ArchiveFindings, AFindingIsHandedOverBeforeItsMessageIsPrinted) {
    class Recorder : public KvCArchiveFindings {
    public:
        using KvCArchiveFindings::KvCArchiveFindings;
        std::vector<std::size_t> printedBefore;

    protected:
        bool takeError(const KvTArchiveFinding& /*finding*/) override { return record(); }
        void takeWarning(const KvTArchiveFinding& /*finding*/) override { (void)record(); }

    private:
        bool record() {
            printedBefore.push_back(messages().size());
            return true;
        }
    };
    writeFile("archive.json", ArchiveBuilder().entry(R"({"featureLevel": 3})").entry("1").text());
    Recorder recorder(writer());
    EXPECT_FALSE(check(recorder));
    EXPECT_THAT(
        recorder.printedBefore,
        ElementsAre(0U, std::wstring(L"WARNING: File entry 0 is not supported. Ignoring this entry.\n").size()));
}

} // namespace
