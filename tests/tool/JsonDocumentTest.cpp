#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "KvNJson.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using KvNJson::json;
using KvNJson::jsonView;
using testing::EndsWith;
using testing::Not;
using testing::StartsWith;

using Arguments = std::vector<std::string>;
using Keys = std::vector<std::string>;

Keys keysOf(const jsonView& object) {
    Keys keys;
    for (std::size_t index = 0; index < object.size(); ++index) {
        keys.emplace_back(object.key(index));
    }
    return keys;
}

/// What each command writes with --json, for an archive with two entries and a board with one element that the first
/// of them updates.
class JsonDocuments : public testing::Test {
protected:
    JsonDocuments() {
        archive_.add(entry("node.bin").board("NODE", 1)).add(entry("b \xC3\xBC.cfg").board("IO", 1).noVersion());
        archive_.write();
    }

    /// The rack with faults, or without any.
    static std::string rack(TargetBuilder& target, const std::vector<FaultBuilder>& faults = {}) {
        target.add(completeBoard("HCN", "NODE", 7).element(completeElement(1, "One")));
        for (const FaultBuilder& fault : faults) {
            target.add(fault);
        }
        return target.write();
    }

    /// A command with the archive and the target that it needs.
    [[nodiscard]] Arguments line(const std::string& command, const std::string& rack,
                                 const Arguments& more = {}) const {
        Arguments arguments{command, "--json", "--emulate", rack};
        if (command != "elements" && command != "reboot") {
            arguments.insert(arguments.end(), {"-a", archive_.folder().text()});
        }
        if (command != "content" && command != "check" && command != "matrix") {
            arguments.insert(arguments.end(), {"-t", "127.0.0.1"});
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    /// Runs a command that must fail so; its document and its last line say why.
    static void expectFailure(const Arguments& arguments, int exitCode, const std::string& failure) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const ToolRun done = runCaptured(arguments);
        EXPECT_EQ(done.exitCode, exitCode);
        const json document = json::parse(done.output);
        ASSERT_FALSE(document.is_invalid()) << done.output;
        const jsonView root = document.view();
        EXPECT_EQ(root.key(0), "format");
        EXPECT_EQ(root.find("format").find("name").get_string(), "kvreflash." + arguments.front());
        EXPECT_EQ(root.find("format").find("version").get_unsigned(), 1U);
        EXPECT_EQ(root.find("failure").get_string(), failure);
        EXPECT_EQ(root.find("retryable").get_boolean(), failure == "target");
        EXPECT_NE(root.find("message").get_string(), "");
        EXPECT_THAT(done.errors, EndsWith("kvreflash: " + std::string(root.find("message").get_string()) + "\n"));
    }

    ArchiveFolder archive_;
    TargetBuilder target_;

private:
    EnvironmentVariable timeScale_{"KV_TIME_SCALE", "0"};
};

const Arguments allCommands{"check", "content", "elements", "plan", "explain", "matrix", "verify", "update", "reboot"};
const Arguments archiveCommands{"check", "content", "plan", "explain", "matrix", "verify", "update"};
const Arguments targetCommands{"elements", "plan", "explain", "verify", "update", "reboot"};

TEST_F(JsonDocuments, ASuccessIsFramedToo) {
    const std::string folder = rack(target_);
    for (const std::string& command : allCommands) {
        SCOPED_TRACE(command);
        if (command == "verify" || command == "reboot") {
            continue; // what is to be updated is not as expected, and this board cannot be rebooted
        }
        const ToolRun done = runCaptured(line(command, folder));
        EXPECT_EQ(done.exitCode, 0) << done.errors;
        EXPECT_THAT(done.output, StartsWith("{\n"
                                            "    \"format\": {\n"
                                            "        \"name\": \"kvreflash." +
                                            command +
                                            "\",\n"
                                            "        \"version\": 1\n"
                                            "    },\n"
                                            "    \"failure\": null,\n"
                                            "    \"retryable\": false,\n"
                                            "    \"message\": \"\",\n"));
        EXPECT_THAT(done.output, EndsWith("\n}\n"));
    }
}

TEST_F(JsonDocuments, ARefusedArchiveIsStated) {
    const ScratchFolder nothing;
    const std::string folder = rack(target_);
    for (const std::string& command : archiveCommands) {
        Arguments arguments = line(command, folder, {"-d", "missing.json"});
        expectFailure(arguments, 3, "archive");
    }
}

TEST_F(JsonDocuments, ATargetThatIsNotThereIsStated) {
    const std::string folder = rack(target_);
    for (const std::string& command : targetCommands) {
        Arguments arguments = line(command, folder);
        arguments.back() = "127.0.0.9";
        expectFailure(arguments, 4, "target");
        arguments.back() = "";
        expectFailure(arguments, 4, "target");
    }
}

TEST_F(JsonDocuments, AScanThatFailsIsStated) {
    const std::string folder = rack(target_, {fault("scan")});
    for (const std::string& command : targetCommands) {
        expectFailure(line(command, folder), 4, "target");
    }
    expectFailure(line("matrix", folder), 4, "target");
}

TEST_F(JsonDocuments, AnEmulatedTargetThatCannotBeLoadedIsStated) {
    const ScratchFolder nothing;
    for (const std::string& command : allCommands) {
        expectFailure(line(command, nothing.text()), 4, "target");
    }
    const json content = json::parse(runCaptured(line("content", nothing.text())).output);
    EXPECT_FALSE(content.view().contains("archive")) << "it was not read";
}

TEST_F(JsonDocuments, FiltersThatLetNothingThroughAreStated) {
    const std::string folder = rack(target_);
    for (const std::string& command : targetCommands) {
        expectFailure(line(command, folder, {"-b", "OTHER"}), 8, "selection");
    }
    expectFailure(line("explain", folder, {"no such element"}), 8, "selection");
}

TEST_F(JsonDocuments, ATargetThatIsNotSupportedIsStated) {
    TargetBuilder other;
    other.add(completeBoard("HCN", "OTHER", 7).element(completeElement(1, "One")));
    const std::string folder = other.write();
    for (const char* command : {"plan", "verify"}) {
        expectFailure(line(command, folder), 2, "unsupported");
    }
}

TEST_F(JsonDocuments, ErrorsThatWereMetAreStated) {
    const std::string folder = rack(target_, {fault("getValue").at("HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]")});
    for (const std::string& command : targetCommands) {
        expectFailure(line(command, folder), 1, "errors");
    }
    expectFailure(line("matrix", folder), 1, "errors");
}

TEST_F(JsonDocuments, AVerificationThatFailsIsStated) {
    expectFailure(line("verify", rack(target_)), 6, "verification");
}

TEST_F(JsonDocuments, AReportThatCannotBeWrittenIsStatedAndNothingIsDone) {
    const ScratchFolder folder;
    const std::string rackFolder = rack(target_);
    for (const char* command : {"plan", "verify"}) {
        const Arguments arguments = line(command, rackFolder, {"--report", folder.text() + "/missing/report.json"});
        expectFailure(arguments, 1, "output");
        EXPECT_FALSE(json::parse(runCaptured(arguments).output).view().contains("elements"));
    }
}

TEST_F(JsonDocuments, EachCommandHasItsParts) {
    const std::string folder = rack(target_);
    const Keys frame{"format", "failure", "retryable", "message"};
    const auto partsOf = [&](const std::string& command) {
        const json document = json::parse(runCaptured(line(command, folder)).output);
        Keys keys = keysOf(document.view());
        EXPECT_EQ(Keys(keys.begin(), keys.begin() + 4), frame) << command;
        keys.erase(keys.begin(), keys.begin() + 4);
        return keys;
    };
    EXPECT_EQ(partsOf("check"), (Keys{"findings", "errors", "warnings"}));
    EXPECT_EQ(partsOf("content"), (Keys{"archive", "release", "files"}));
    EXPECT_EQ(partsOf("elements"), (Keys{"elements"}));
    EXPECT_EQ(partsOf("explain"), (Keys{"release", "elements", "hiddenElements"}));
    EXPECT_EQ(partsOf("matrix"), (Keys{"archive", "release", "targets", "unmatchedEntries"}));
    const Keys sessionParts{"toolVersion", "begin",    "end",     "exitCode",      "target",    "archiveFolder",
                            "files",       "archive",  "release", "targetAddress", "supported", "unsupportedElements",
                            "phaseCount",  "elements", "stage",   "fileOutcomes",  "errors",    "verificationCounts",
                            "look",        "messages"};
    EXPECT_EQ(partsOf("plan"), sessionParts);
    EXPECT_EQ(partsOf("verify"), sessionParts);
    EXPECT_EQ(partsOf("update"), sessionParts);
    EXPECT_EQ(partsOf("reboot"), sessionParts);
}

TEST_F(JsonDocuments, TheContentListsTheEntriesInTheirOrder) {
    const json document = json::parse(runCaptured(line("content", rack(target_))).output);
    const jsonView info = document.view().find("archive");
    EXPECT_EQ(info.find("archiveName").get_string(), "Archive");
    EXPECT_EQ(info.find("archiveVersion").get_string(), "23.2.1");
    EXPECT_EQ(info.find("productName").get_string(), "Product");
    EXPECT_EQ(info.find("formatVersion").get_string(), "1.0");
    EXPECT_EQ(info.find("archiveVariant").get_string(), "Variant");
    const jsonView files = document.view().find("files");
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files.at(0).find("name").get_string(), "node.bin");
    EXPECT_EQ(files.at(0).find("version").get_string(), "2.0");
    EXPECT_EQ(files.at(1).find("name").get_string(), "b \xC3\xBC.cfg");
    EXPECT_TRUE(files.at(1).find("version").is_null());
}

TEST_F(JsonDocuments, APlanHasWhatWasFoundAndWhatWasDecided) {
    target_.add(completeBoard("IOMODULE", "OTHER", 8).element(completeElement(2, "Two").parameter("VERSION", "")));
    const json document = json::parse(runCaptured(line("plan", rack(target_))).output);
    const jsonView elements = document.view().find("elements");
    ASSERT_EQ(elements.size(), 2U);
    const jsonView other = elements.at(elements.at(0).find("name").get_string() == "One" ? 1 : 0);
    const jsonView one = elements.at(elements.at(0).find("name").get_string() == "One" ? 0 : 1);
    EXPECT_EQ(one.find("displayName").get_string(), "NODE, SN 7, One");
    EXPECT_EQ(one.find("decision").get_string(), "update");
    EXPECT_EQ(one.find("phase").get_unsigned(), 0U);
    EXPECT_EQ(one.find("entry").find("name").get_string(), "node.bin");
    EXPECT_TRUE(one.find("hasArchiveFile").get_boolean());
    EXPECT_TRUE(one.find("checksumMismatch").get_boolean());
    for (const char* unknown :
         {"installedVersion", "phase", "archiveFileIndex", "availableVersion", "checksumMismatch", "entry"}) {
        EXPECT_TRUE(other.find(unknown).is_null()) << unknown;
    }
    EXPECT_EQ(other.find("decision").get_string(), "leave");
}

TEST_F(JsonDocuments, WhatTheSessionSaysGoesToStandardError) {
    const std::string folder = rack(target_);
    for (const char* command : {"content", "elements", "plan"}) {
        Arguments withoutJson = line(command, folder);
        withoutJson.erase(withoutJson.begin() + 1);
        const ToolRun text = runCaptured(withoutJson);
        EXPECT_THAT(text.output, Not(StartsWith("{")));
        EXPECT_EQ(runCaptured(line(command, folder)).errors, text.output) << command;
    }
}

} // namespace
