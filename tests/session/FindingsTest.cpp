#include "KvIArchive.h"
#include "ObservedSessionTest.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using namespace KvNReflasher;

namespace {

class FindingsTest : public ObservedSessionTest {
protected:
    FindingsTest() { addNodeElement(1, completeElement(1).polls(1)); }

    /// Severity, code, place and texts of each finding.
    static std::vector<std::string> textsOf(const std::vector<KvTFinding>& findings) {
        std::vector<std::string> texts;
        texts.reserve(findings.size());
        for (const KvTFinding& finding : findings) {
            texts.push_back(finding.code + " " + std::to_string(finding.line) + ":" + std::to_string(finding.column) +
                            " " + finding.path + " " + finding.message + " " + finding.hint);
        }
        return texts;
    }
    /// Of an archive that no session has read.
    std::vector<std::string> textsOfArchive() const {
        const std::unique_ptr<KvIArchive> reader(
            KvIArchive::createInstance(options.archiveFolder, options.descriptionFileName));
        return textsOf(reader->findings());
    }
    void prepareKeeping(std::uint32_t mode, std::uint32_t status = 0) {
        observedFor(mode).keepDescription();
        EXPECT_EQ(status, prepare(mode));
    }
};

} // namespace

TEST_F(FindingsTest, AGoodArchiveHasNone) {
    prepareKeeping(performUpdate);
    EXPECT_THAT(observed().findings(), IsEmpty());
    EXPECT_TRUE(outcome().verdict.isSuccess());
    EXPECT_TRUE(run());
}

TEST_F(FindingsTest, TheyAreThoseOfTheArchiveInEachModeThatReadsIt) {
    archive.addWithoutFile(entry("missing.bin").board("NODE", 7));
    archive.folder().write("left.bin", "content");
    for (const std::uint32_t mode :
         {showArchiveVersion, showArchiveContent, dumpArchiveDescription, showUpdatePlan, performUpdate}) {
        SCOPED_TRACE(mode);
        prepareKeeping(mode);
        EXPECT_THAT(textsOf(observed().findings()),
                    ElementsAre(StartsWith("unnamed-file "), StartsWith("update-file-missing ")));
        EXPECT_EQ(textsOfArchive(), textsOf(observed().findings()));
        EXPECT_TRUE(outcome().verdict.isSuccess());
        close();
    }
}

TEST_F(FindingsTest, TheyAreOfTheTextThatWasRead) {
    archive.folder().write("left.bin", "content");
    prepareKeeping(performUpdate);
    archive.folder().write("archive.json", "{}");
    EXPECT_THAT(textsOf(observed().findings()), ElementsAre(StartsWith("unnamed-file ")));
    archive.removeFile("archive.json");
    EXPECT_THAT(textsOf(observed().findings()), ElementsAre(StartsWith("unnamed-file ")));
    EXPECT_THAT(textsOfArchive(), ElementsAre(StartsWith("description-unreadable ")));
}

TEST_F(FindingsTest, UpdateFilesAreLookedAtWhenTheyAreAskedFor) {
    prepareKeeping(performUpdate);
    archive.folder().write("node1.bin", "");
    EXPECT_THAT(textsOf(observed().findings()), ElementsAre(StartsWith("update-file-empty ")));
}

TEST_F(FindingsTest, OfAnArchiveThatIsRefusedThereIsEverything) {
    archive.add(entry("b.bin").board("NODE", 2).mode("wrong"));
    archive.addWithoutFile(entry("c.bin").board("NODE", 3).noChecksum());
    prepareKeeping(performUpdate, 1);
    EXPECT_THAT(textsOf(observed().findings()),
                ElementsAre(StartsWith("mode-unknown "), StartsWith("checksum-file-missing ")));
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
}

TEST_F(FindingsTest, WithoutATextTheOnlyFindingIsAnError) {
    const auto onlyCode = [this] {
        const std::vector<KvTFinding> findings = observed().findings();
        return findings.size() == 1 && findings.front().severity == KvESeverity::error ? findings.front().code : "";
    };
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_EQ("description-unreadable", onlyCode()) << "it was not kept";
    close();
    prepareKeeping(showTargetElements);
    EXPECT_EQ("description-unreadable", onlyCode()) << "no archive was read";
    close();
    options.descriptionFileName = L"missing.json";
    prepareKeeping(performUpdate, 1);
    EXPECT_EQ("description-unreadable", onlyCode());
    close();
    EXPECT_EQ("description-unreadable", onlyCode()) << "before prepare()";
}
