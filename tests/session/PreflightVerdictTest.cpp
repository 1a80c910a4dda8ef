#include "ObservedSessionTest.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace KvNReflasher;

namespace {

class PreflightVerdictTest : public ObservedSessionTest {
protected:
    std::vector<std::string> preflightOf(std::uint32_t mode) {
        EXPECT_EQ(0U, prepare(mode));
        return observed().preflight();
    }
};

} // namespace

TEST_F(PreflightVerdictTest, APlanWithoutFaultPasses) {
    addNodeElement(1, completeElement(1).polls(1));
    EXPECT_THAT(preflightOf(performUpdate), IsEmpty());
    EXPECT_TRUE(outcome().verdict.isSuccess());
    EXPECT_TRUE(run());
    EXPECT_TRUE(outcome().verdict.isSuccess());
}

TEST_F(PreflightVerdictTest, AMissingFileIsAFaultOfTheArchive) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    archive.removeFile("node1.bin");
    archive.removeFile("node2.bin");
    EXPECT_THAT(preflightOf(performUpdate), ElementsAre("node1.bin: not found", "node2.bin: not found"));
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
    EXPECT_EQ("preflight: node1.bin: not found", outcome().verdict.message);
    EXPECT_EQ(KvEStage::prepared, outcome().stage);
}

TEST_F(PreflightVerdictTest, AFileOfAnotherVersionIsAFaultOfTheArchive) {
    node.element(completeElement(1));
    archive.add(entry("a.kfw").board("NODE", 1));
    archive.folder().write("a.kfw", firmwareImage(KvCVersion("1.9"), 2));
    EXPECT_THAT(preflightOf(performUpdate), ElementsAre("a.kfw: its version is 1.9, the description says 2.0"));
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
}

TEST_F(PreflightVerdictTest, FilesOfElementsThatAreNotUpdatedAreNotChecked) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2)));
    archive.removeFile("node1.bin");
    archive.removeFile("node2.bin");
    EXPECT_EQ(0U, prepare(performUpdate));
    EXPECT_TRUE(observed().disableElement("0").isDone());
    EXPECT_THAT(observed().preflight(), IsEmpty());
}

TEST_F(PreflightVerdictTest, CollectedErrorsAreAFaultOfTheTarget) {
    node.element(updateElement(1)); // VERSION_HISTORY is missing
    archive.add(entry("a.bin").board("NODE", 1));
    const std::vector<std::string> findings = preflightOf(performUpdate);
    ASSERT_EQ(1U, findings.size());
    EXPECT_THAT(findings.front(), testing::StartsWith("the target reported an error: "));
    EXPECT_EQ(KvEFailure::target, outcome().verdict.failure);
    EXPECT_EQ("preflight: errors were met: " + findings.front(), outcome().verdict.message);
}

TEST_F(PreflightVerdictTest, OfFaultsOfBothThatOfTheArchiveCounts) {
    node.element(updateElement(1));
    archive.addWithoutFile(entry("a.bin").board("NODE", 1));
    EXPECT_EQ(2U, preflightOf(performUpdate).size());
    EXPECT_EQ(KvEFailure::archive, outcome().verdict.failure);
    EXPECT_EQ("preflight: a.bin: not found", outcome().verdict.message);
}
