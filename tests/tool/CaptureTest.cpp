#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "ExampleRack.h"
#include "KvNJson.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using CapturedNames = std::vector<std::string>;

ToolRun captureInto(const std::string& folder, const std::string& rack) {
    return runCaptured({"capture", "-t", "127.0.0.1", folder, "--emulate", rack});
}

class Capture : public testing::Test {
protected:
    Capture() { rack_.add(completeBoard("HCN", "NODE", 7).element(completeElement(1)).element(completeElement(2))); }

    /// Where a target is captured into.
    [[nodiscard]] std::string copy(const std::string& name = "copy") const { return scratch_.text() + "/" + name; }
    [[nodiscard]] std::string copied(const std::string& name = "copy") const {
        return scratch_.read(name + "/target.json");
    }

    TargetBuilder rack_;
    ScratchFolder scratch_;
};

TEST_F(Capture, WritesWhatAnEmulatedTargetIsMadeOf) {
    TargetBuilder small;
    small.add(board("ION", "BOARD \"\xC3\xBC\"", 9).instance(4).add(item("UPDATE_INFO")));
    const ToolRun run = captureInto(copy(), small.write());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.output,
              "Captured 127.0.0.1: 3 items with 2 parameters.\nRehearse with --emulate '" + copy() + "'.\n");
    EXPECT_EQ(copied(), "{\n"
                        "    \"addresses\": [\n"
                        "        \"127.0.0.1\"\n"
                        "    ],\n"
                        "    \"inventory\": {\n"
                        "        \"id\": \"ROOT\",\n"
                        "        \"items\": [\n"
                        "            {\n"
                        "                \"id\": \"ION\",\n"
                        "                \"instance\": 4,\n"
                        "                \"parameters\": {\n"
                        "                    \"PRODUCT/BOARD_TYPE\": \"BOARD \\\"\xC3\xBC\\\"\",\n"
                        "                    \"PRODUCT/SERIAL_NUMBER\": 9\n"
                        "                },\n"
                        "                \"items\": [\n"
                        "                    {\n"
                        "                        \"id\": \"UPDATE_INFO\"\n"
                        "                    }\n"
                        "                ]\n"
                        "            }\n"
                        "        ]\n"
                        "    }\n"
                        "}\n");
    EXPECT_EQ(scratch_.list(), (CapturedNames{"copy", "copy/target.json"}));
}

TEST_F(Capture, WritesTheIdentifierOfTheRoot) {
    rack_.root(item("HCN"));
    EXPECT_EQ(captureInto(copy(), rack_.write()).exitCode, 0);
    EXPECT_EQ(KvNJson::json::parse(copied()).view().find("inventory").find("id").get_string(), "HCN");
}

TEST_F(Capture, WritesWhatUpdatesHaveLeftOnTheTarget) {
    const EnvironmentVariable timeScale{"KV_TIME_SCALE", "0"};
    ArchiveFolder archive;
    archive.add(entry("one.bin").board("NODE", 1).version("7.5").noChecksum());
    archive.add(entry("two.bin").board("NODE", 2).version("7.5").noChecksum());
    archive.folder().write("one.bin", firmwareImage(KvCVersion("7.5"), 77));
    archive.folder().write("two.bin", firmwareImage(KvCVersion("7.5"), 78));
    archive.write();
    const std::string rack = rack_.write();
    ASSERT_EQ(runCaptured({"update", "-a", archive.folder().text(), "-t", "127.0.0.1", "--emulate", rack}).exitCode, 0);
    ASSERT_EQ(captureInto(copy(), rack).exitCode, 0);
    EXPECT_THAT(copied(), HasSubstr("\"CHECKSUM_CRC32\": 77,\n"));
    EXPECT_THAT(copied(), HasSubstr("\"CHECKSUM_CRC32\": 78,\n"));
    EXPECT_THAT(copied(), HasSubstr("\"VERSION\": \"7.5\""));
}

TEST_F(Capture, TakesAnEmptyFolder) {
    std::filesystem::create_directory(scratch_.path() / "copy");
    EXPECT_EQ(captureInto(copy(), rack_.write()).exitCode, 0);
    EXPECT_TRUE(scratch_.has("copy/target.json"));
}

TEST_F(Capture, TakesNamesOfAnyLanguage) {
    EXPECT_EQ(captureInto(copy("\xC3\xBC \xE2\x82\xAC"), rack_.write()).exitCode, 0);
    EXPECT_TRUE(scratch_.has("\xC3\xBC \xE2\x82\xAC/target.json"));
    EXPECT_EQ(captureInto(copy("again"), copy("\xC3\xBC \xE2\x82\xAC")).exitCode, 0);
    EXPECT_EQ(copied("again"), copied("\xC3\xBC \xE2\x82\xAC"));
}

TEST_F(Capture, RefusesAFolderThatHoldsAnything) {
    scratch_.write("copy/something", "kept");
    const ToolRun run = captureInto(copy(), rack_.write());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "kvreflash: '" + copy() + "' exists and is not empty\n");
    EXPECT_EQ(scratch_.list(), (CapturedNames{"copy", "copy/something"}));
}

TEST_F(Capture, RefusesAFileInThePlaceOfTheFolder) {
    scratch_.write("copy", "kept");
    const ToolRun run = captureInto(copy(), rack_.write());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, "kvreflash: '" + copy() + "' exists and is no folder\n");
    EXPECT_EQ(scratch_.read("copy"), "kept");
}

TEST_F(Capture, MakesNoFolderAbove) {
    scratch_.write("file", "kept");
    for (const char* name : {"missing/copy", "file/copy"}) {
        const ToolRun run = captureInto(copy(name), rack_.write());
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, StartsWith("kvreflash: '" + copy(name) + "' cannot be "));
        EXPECT_EQ(scratch_.list(), CapturedNames{"file"});
    }
}

TEST_F(Capture, ATargetThatIsNotFoundLeavesNothing) {
    const ToolRun missing = runCaptured({"capture", "-t", "127.0.0.9", copy(), "--emulate", rack_.write()});
    EXPECT_EQ(missing.exitCode, 4);
    EXPECT_EQ(missing.output, "");
    EXPECT_THAT(missing.errors, EndsWith("\n \n"
                                         "ERROR: Device with IP address 127.0.0.9 not found (error code: -1)!\n"
                                         "ERROR: The target system is inaccessible!\n"
                                         "kvreflash: the target '127.0.0.9' is not accessible\n"));
    const ToolRun unnamed = runCaptured({"capture", copy(), "--emulate", rack_.write()});
    EXPECT_EQ(unnamed.exitCode, 4);
    EXPECT_THAT(unnamed.errors, EndsWith("\n \n"
                                         "ERROR: No IP address or hostname specified!\n"
                                         "kvreflash: give the target with -t HOST\n"));
    EXPECT_EQ(scratch_.list(), CapturedNames{});
}

TEST_F(Capture, AnInventoryThatCannotBeReadLeavesNothing) {
    rack_.add(fault("scan"));
    const ToolRun run = captureInto(copy(), rack_.write());
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, HasSubstr("ERROR: Cannot read target device information.\n"));
    EXPECT_THAT(run.errors, EndsWith("kvreflash: the inventory of the target '127.0.0.1' cannot be read\n"));
    EXPECT_EQ(scratch_.list(), CapturedNames{});
}

TEST_F(Capture, TheTargetIsScannedOnce) {
    rack_.add(fault("scan").occurrence(2));
    EXPECT_EQ(captureInto(copy(), rack_.write()).exitCode, 0);
}

TEST_F(Capture, AnEmptyNameIsNoFolder) {
    const ToolRun run = captureInto("", rack_.write());
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, StartsWith("kvreflash: '' cannot be created: "));
}

TEST_F(Capture, NamesWhatCannotBeReadAndLeavesItOut) {
    TargetBuilder rack;
    rack.add(board("HCN", "NODE", 1).parameter("SLOT", std::uint64_t(1) << 32U).parameter("UNITNAME", "Unit"));
    const ToolRun run = captureInto(copy(), rack.write());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "kvreflash: warning: SLOT of HCN[1] cannot be read; it is left out\n");
    EXPECT_THAT(run.output, HasSubstr(" 2 items with 3 parameters."));
    EXPECT_EQ(copied().find("\"SLOT\""), std::string::npos);
}

TEST_F(Capture, AValueOfAnotherTypeThanUsualKeepsIt) {
    TargetBuilder rack;
    rack.add(item("HCN").parameter("PRODUCT/BOARD_TYPE", std::uint64_t(4294967295U)).parameter("SLOT", "three"));
    const ToolRun run = captureInto(copy(), rack.write());
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(copied(), HasSubstr("\"PRODUCT/BOARD_TYPE\": 4294967295,\n"));
    EXPECT_THAT(copied(), HasSubstr("\"SLOT\": \"three\""));
}

TEST_F(Capture, AReadThatFailsOnceTurnsNoTextIntoAVersion) {
    TargetBuilder rack;
    rack.add(item("HCN").parameter("NAME", "Node"));
    // The first reading of the capture itself: the scan before it does not ask for it.
    rack.add(fault("getValue").occurrence(1));
    const ToolRun run = captureInto(copy(), rack.write());
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, HasSubstr("NAME of HCN[1] cannot be read; it is left out\n"));
}

TEST_F(Capture, AVersionTextStaysAsItIs) {
    TargetBuilder rack;
    rack.add(board("HCN", "NODE", 1).element(completeElement(1).parameter("VERSION", "1.2.0")));
    EXPECT_EQ(captureInto(copy(), rack.write()).exitCode, 0);
    EXPECT_THAT(copied(), HasSubstr("\"VERSION\": \"1.2.0\""));
}

TEST_F(Capture, TellsMoreWhenAskedTo) {
    const std::string rack = rack_.write();
    const ToolRun run = runCaptured({"capture", "-v", "-t", "127.0.0.1", copy(), "--emulate", rack});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.output, HasSubstr("HCN found: HCN[1]\n"));
    EXPECT_THAT(run.output, HasSubstr("Captured 127.0.0.1: "));
}

// Racks of any shape plan the same as their captures.

constexpr std::array itemNames{
    "HCN",      "CN",          "NETC",           "BACKPLANE",         "NETWORK",     "IOROUTER",
    "ION",      "IOMODULE",    "SUB_BOARDS",     "FBMODULE",          "UPDATE_INFO", "PIGGYBACK_MODULE",
    "FIRMWARE", "UPDATE_INFO", "UPDATE_ELEMENT", "FILESYSTEM_ELEMENT"};
constexpr std::array textNames{"BOARD_TYPE", "VARIANT",  "NAME",    "UNITNAME",       "PACKAGE_NAME",
                               "RACKNAME",   "LOCATION", "VERSION", "VERSION_HISTORY"};
constexpr std::array numberNames{"ID",
                                 "HW_TYPE",
                                 "SERIAL_NUMBER",
                                 "SLOT_COUNT",
                                 "SLOT",
                                 "CONFIGURATION",
                                 "HW_COMPATIBILITY_ID",
                                 "SW_COMPATIBILITY_ID",
                                 "TYPE_ID",
                                 "CUSTOM",
                                 "VALID",
                                 "ACTIVE",
                                 "CHECKSUM_CRC32",
                                 "MIN_HW_COMPATIBILITY_ID",
                                 "MAX_HW_COMPATIBILITY_ID",
                                 "MIN_SW_COMPATIBILITY_ID",
                                 "MAX_SW_COMPATIBILITY_ID"};
constexpr std::array textValues{
    "",    "NODE",  "IO",       "UserFirmware",       "1",        "1.0", "2.0",
    "2.1", "1.02",  "23.2a12",  "#72057598332895233", "/a/b.ini", "A",   "\xC3\xBC \"q\"\n\x01",
    "x y", "3.5.2", "1.2.0.0.3"};
constexpr std::array<std::uint32_t, 9> numberValues{0, 1, 1, 1, 2, 3, 255, 256, 4294967295U};

class RandomRack {
public:
    explicit RandomRack(std::uint32_t seed) : engine_(seed) {}

    std::string write(TargetBuilder& target) {
        const std::size_t count = 1 + below(4);
        const bool isNumbered = below(3) == 0;
        for (std::size_t index = 0; index < count; ++index) {
            target.add(numbered(item(index), isNumbered, count - index));
        }
        return target.write();
    }

private:
    std::size_t below(std::size_t end) { return engine_() % end; }
    template <typename Value, std::size_t size>
    const Value& oneOf(const std::array<Value, size>& values) {
        return values[below(size)];
    }

    /// Most are boards with elements that a plan finds, the others anything.
    ItemBuilder item(std::size_t index) {
        if (below(4) == 0) {
            return anything(3);
        }
        ItemBuilder made =
            completeBoard(index == 0 ? "HCN" : oneOf(itemNames), below(2) == 0 ? "NODE" : "IO", oneOf(numberValues));
        for (std::size_t count = 1 + below(4); count > 0; --count) {
            ItemBuilder element = below(4) == 0 ? completeFile(1, "/a/b.ini") : completeElement(oneOf(numberValues));
            made.element(std::move(below(3) == 0 ? addParameters(element, 3) : element));
        }
        if (below(2) == 0) {
            made.add(anything(3));
        }
        return std::move(below(3) == 0 ? addParameters(made, 4) : made);
    }

    ItemBuilder anything(std::size_t depth) {
        ItemBuilder made = ::item(oneOf(itemNames));
        addParameters(made, below(60));
        const std::size_t count = depth == 0 ? 0 : below(4);
        const bool isNumbered = below(3) == 0;
        for (std::size_t index = 0; index < count; ++index) {
            made.add(numbered(anything(depth - 1), isNumbered, count - index));
        }
        return made;
    }

    static ItemBuilder numbered(ItemBuilder made, bool isNumbered, std::size_t number) {
        if (isNumbered) {
            made.instance(static_cast<std::uint32_t>(number));
        }
        return made;
    }

    /// A few are of the other type.
    ItemBuilder& addParameters(ItemBuilder& made, std::size_t count) {
        for (; count > 0; --count) {
            const bool isText = below(26) < textNames.size();
            const std::string name =
                std::string(below(2) == 0 ? "PRODUCT/" : "") + (isText ? oneOf(textNames) : oneOf(numberNames));
            if (isText != (below(20) == 0)) {
                made.parameter(name, oneOf(textValues));
            } else {
                made.parameter(name, std::uint64_t(oneOf(numberValues)));
            }
        }
        return made;
    }

    std::mt19937 engine_;
};

/// What a run says, whatever the rack is called and whenever it ran.
std::string toldOf(const ToolRun& run, const std::string& rack) {
    std::string text = std::to_string(run.exitCode) + "\n" + run.output + "\n" + run.errors;
    for (std::size_t place = text.find(rack); place != std::string::npos; place = text.find(rack, place)) {
        text.replace(place, rack.size(), "RACK");
    }
    for (const char* const key : {"\n    \"begin\": ", "\n    \"end\": "}) {
        if (const std::size_t place = text.find(key); place != std::string::npos) {
            text.erase(place, text.find('\n', place + 1) - place);
        }
    }
    return text;
}

/// Every way to look at a rack shows the same of both. The result is the number of the plan's elements.
std::size_t expectSameRack(const std::string& archive, const std::string& rack, const std::string& copy) {
    const std::vector<CapturedNames> commands{{"plan", "-a", archive},
                                              {"plan", "-a", archive, "--json"},
                                              {"plan", "-a", archive, "-v", "--force", "--configuration"},
                                              {"elements", "-v"}};
    std::size_t count = 0;
    for (CapturedNames command : commands) {
        const bool isDocument = command.back() == "--json";
        command.insert(command.end(), {"-t", "127.0.0.1", "--emulate", rack});
        const ToolRun original = runCaptured(command);
        command.back() = copy;
        const ToolRun captured = runCaptured(command);
        EXPECT_EQ(toldOf(original, rack), toldOf(captured, copy));
        if (isDocument) {
            count = KvNJson::json::parse(original.output).view().find("elements").size();
        }
    }
    return count;
}

TEST_F(Capture, ARackOfAnyShapePlansAsItsCaptureDoes) {
    ArchiveFolder archive;
    archive.add(entry("node.bin").board("NODE", 1)).add(entry("node2.bin").board("NODE", 2).mode("upgrade"));
    archive.add(entry("io.bin").board("IO", 1).version("1.0").checksum(1)).add(entry("ini").target("NODE", "/a/b.ini"));
    archive.write();
    std::size_t elements = 0;
    std::size_t size = 0;
    for (std::uint32_t seed = 0; seed < 60 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        TargetBuilder target;
        const std::string rack = RandomRack(seed).write(target);
        const std::string name = std::to_string(seed);
        ASSERT_EQ(captureInto(copy(name), rack).exitCode, 0);
        elements += expectSameRack(archive.folder().text(), rack, copy(name));
        ASSERT_EQ(captureInto(copy(name + "again"), copy(name)).exitCode, 0);
        EXPECT_EQ(copied(name), copied(name + "again"));
        size += copied(name).size();
    }
    EXPECT_GT(elements, 200U);
    EXPECT_GT(size, 200000U);
}

TEST_F(Capture, EveryParameterAnItemCanHaveIsThereInTheCapture) {
    std::size_t number = 1000;
    ItemBuilder full = item("HCN");
    for (const char* const group : {"", "PRODUCT/"}) {
        for (const char* const name : textNames) {
            full.parameter(std::string(group) + name, "text " + std::to_string(++number));
        }
        for (const char* const name : numberNames) {
            full.parameter(std::string(group) + name, std::uint64_t(++number));
        }
    }
    for (const char* const name : itemNames) {
        full.add(item(name));
    }
    TargetBuilder rack;
    rack.add(full.add(item("ROOT")));
    const ToolRun run = captureInto(copy(), rack.write());
    EXPECT_EQ(run.errors, "");
    EXPECT_THAT(run.output, HasSubstr(" 19 items with 52 parameters."));
    const KvNJson::json document = KvNJson::json::parse(copied());
    const KvNJson::jsonView parameters = document.view().find("inventory").find("items").at(0).find("parameters");
    const KvNJson::json expected = full.build();
    const KvNJson::jsonView given = expected.view().find("parameters");
    ASSERT_EQ(given.size(), 52U);
    for (std::size_t index = 0; index < given.size(); ++index) {
        const KvNJson::jsonView found = parameters.find(given.key(index));
        EXPECT_EQ(found.get_string(), given.at(index).get_string()) << given.key(index);
        EXPECT_EQ(found.get_unsigned(), given.at(index).get_unsigned()) << given.key(index);
    }
}

TEST_F(Capture, TheExampleRackPlansAsItsCaptureDoes) {
    const std::string archive = utf8Of(std::filesystem::path(exampleArchive()));
    const std::string rack = utf8Of(std::filesystem::path(exampleRack()));
    ASSERT_EQ(captureInto(copy(), rack).exitCode, 0);
    EXPECT_GT(expectSameRack(archive, rack, copy()), 20U);
    ASSERT_EQ(captureInto(copy("again"), copy()).exitCode, 0);
    EXPECT_EQ(copied("again"), copied());
}

} // namespace
