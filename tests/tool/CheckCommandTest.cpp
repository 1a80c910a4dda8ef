#include "ArchiveFolder.h"
#include "KvNJson.h"
#include "PathTexts.h"
#include "ScratchFolder.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;

class CheckCommand : public testing::Test {
protected:
    CheckCommand() { archive_.add(entry("node.bin").board("QB4120", 1)); }

    ToolRun run(std::vector<std::string> more = {}) {
        archive_.write();
        std::vector<std::string> arguments{"check", "-a", archive_.folder().text()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCaptured(arguments);
    }

    ArchiveFolder archive_;
};

TEST_F(CheckCommand, AGoodArchiveHasNoFindings) {
    const ToolRun done = run({"--strict"});
    EXPECT_EQ(0, done.exitCode);
    EXPECT_EQ("No findings.\n", done.output);
    EXPECT_EQ("", done.errors);
}

TEST_F(CheckCommand, WarningsFailOnlyWhenItIsStrict) {
    archive_.removeFile("node.bin");
    EXPECT_EQ(0, run().exitCode);
    const ToolRun strict = run({"--strict"});
    EXPECT_EQ(3, strict.exitCode);
    EXPECT_EQ("kvreflash: " + quotedPath(archive_.folder().text() + "/archive.json") + " has 0 errors, 1 warning\n",
              strict.errors);
    EXPECT_THAT(run().output, EndsWith("\n\n0 errors, 1 warning\n"));
    EXPECT_EQ("", run().errors);
}

TEST_F(CheckCommand, ErrorsFailAlways) {
    archive_.add(entry("b.bin").board("QB4120", 2).mode("wrong"));
    const ToolRun done = run();
    EXPECT_EQ(3, done.exitCode);
    EXPECT_THAT(done.output, EndsWith("\n\n1 error, 0 warnings\n"));
    EXPECT_THAT(done.errors,
                EndsWith(quotedPath(archive_.folder().text() + "/archive.json") + " has 1 error, 0 warnings\n"));
    EXPECT_EQ(3, run({"--strict"}).exitCode);
}

TEST_F(CheckCommand, AFindingIsAParagraphInTheStyleOfACompiler) {
    archive_.add(entry("b.bin").board("QB4120", 2).mode("wrong"));
    const std::string output = run().output;
    EXPECT_THAT(output, HasSubstr("/archive.json:24:21: error: File entry 1 is invalid. Property \"mode\" is invalid. "
                                  "[mode-unknown]\n"
                                  "    $.files[1].mode: Write \"standard\" or \"upgrade\".\n\n"))
        << archive_.folder().read("archive.json");
}

TEST_F(CheckCommand, TheJsonDocumentHoldsTheSame) {
    archive_.removeFile("node.bin");
    archive_.add(entry("b.bin").board("QB4120", 2).mode("wrong"));
    const ToolRun done = run({"--format", "json"});
    EXPECT_EQ(3, done.exitCode);
    EXPECT_EQ(done.output, run({"--json"}).output);
    const KvNJson::json document = KvNJson::json::parse(done.output);
    const KvNJson::jsonView root = document.view();
    EXPECT_EQ(1U, root.find("errors").get_unsigned());
    EXPECT_EQ(1U, root.find("warnings").get_unsigned());
    ASSERT_EQ(2U, root.find("findings").size());
    const KvNJson::jsonView finding = root.find("findings").at(1);
    EXPECT_EQ("error", finding.find("severity").get_string());
    EXPECT_EQ("mode-unknown", finding.find("code").get_string());
    EXPECT_EQ(archive_.folder().text() + "/archive.json", finding.find("file").get_string());
    EXPECT_EQ(24U, finding.find("line").get_unsigned());
    EXPECT_EQ(21U, finding.find("column").get_unsigned());
    EXPECT_EQ("$.files[1].mode", finding.find("path").get_string());
    EXPECT_EQ("File entry 1 is invalid. Property \"mode\" is invalid.", finding.find("message").get_string());
    EXPECT_EQ("Write \"standard\" or \"upgrade\".", finding.find("hint").get_string());
}

TEST_F(CheckCommand, AnotherDescriptionOfTheFolderMayBeChecked) {
    const ToolRun done = run({"-d", "other.json", "--format", "json"});
    EXPECT_EQ(3, done.exitCode);
    EXPECT_THAT(done.output, HasSubstr("\"code\": \"description-unreadable\""));
    EXPECT_THAT(done.output, HasSubstr("/other.json\""));
    EXPECT_THAT(done.errors,
                EndsWith(quotedPath(archive_.folder().text() + "/other.json") + " has 1 error, 0 warnings\n"));
}

} // namespace
