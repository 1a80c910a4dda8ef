#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "KvEmulation.h"
#include "KvNJson.h"
#include "PathTexts.h"
#include "ScratchFolder.h"
#include "TargetBuilder.h"
#include "ToolRun.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using KvNJson::json;
using KvNJson::jsonView;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// An archive whose entries update element 1 of the processor board NODE and of the board IO to version 2.0, and a
/// folder for targets.
class Matrix : public testing::Test {
protected:
    Matrix() {
        archive_.add(entry("node.bin").board("NODE", 1));
        archive_.add(entry("io.bin").board("IO", 1));
        archive_.add(entry("other.bin").board("OTHER", 1));
        archive_.write();
    }

    [[nodiscard]] ToolRun run(const std::vector<std::string>& folders,
                              const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"matrix", "-a", archive_.folder().text()};
        for (const std::string& folder : folders) {
            arguments.insert(arguments.end(), {"--emulate", folder});
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCaptured(arguments);
    }

    /// A document that a run without failure has written.
    [[nodiscard]] json document(const std::vector<std::string>& folders) const {
        const ToolRun done = run(folders, {"--json"});
        EXPECT_EQ(done.exitCode, 0) << done.errors;
        return json::parse(done.output);
    }

    ArchiveFolder archive_;
};

ItemBuilder newElement(std::uint32_t id) {
    return completeElement(id).parameter("VERSION", "2.0").parameter("CHECKSUM_CRC32", std::uint64_t(2));
}

std::string texts(const jsonView& records, std::string_view key) {
    std::string all;
    for (std::size_t index = 0; index < records.size(); ++index) {
        all.append(index == 0 ? "" : " ").append(records.at(index).find(key).get_string());
    }
    return all;
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

/// A line's cells without the blanks that fill them up; empty when no line begins with `first`.
std::vector<std::string> cellsOf(const std::string& output, const std::string& first) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::vector<std::string> cells;
        std::istringstream rest(line);
        for (std::string cell; line.starts_with(first + " ") && std::getline(rest, cell, '|');) {
            cell.erase(cell.find_last_not_of(' ') + 1);
            cells.push_back(cell.substr(std::min(cell.find_first_not_of(' '), cell.size())));
        }
        if (cells.size() > 1) {
            return cells;
        }
    }
    return {};
}

TEST_F(Matrix, EachElementHasItsState) {
    TargetBuilder target;
    target.add(completeBoard("HCN", "NODE", 1).element(completeElement(1, "One")));
    target.add(completeBoard("IOMODULE", "IO", 2).element(newElement(1)).element(completeElement(2, "Two")));
    target.add(
        completeBoard("IOMODULE", "FPGA_TP1", 3).element(completeElement(1, "Carried").parameter("VERSION", "")));
    const std::string folder = target.write();

    const ToolRun done = run({folder});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.errors, "");
    EXPECT_THAT(done.output, HasSubstr("\n" + folder + " (127.0.0.1)\n\nNo. | Update element "));
    EXPECT_THAT(cellsOf(done.output, "0"), ElementsAre("0", "NODE, SN 1, One", "1.0", "2.0", "would update"));
    EXPECT_THAT(cellsOf(done.output, "1"), ElementsAre("1", "IO, SN 2, Firmware", "2.0", "2.0", "up to date"));
    EXPECT_THAT(cellsOf(done.output, "2"), ElementsAre("2", "IO, SN 2, Two", "1.0", "---", "no entry"));
    EXPECT_THAT(cellsOf(done.output, "3"), ElementsAre("3", "FPGA_TP1, SN 3, Carried", "---", "---", "disabled"));
    EXPECT_THAT(cellsOf(done.output, folder), ElementsAre(folder, "127.0.0.1", "1", "1", "1", "1"));
    EXPECT_THAT(done.output, HasSubstr("\n\nFile entries that fit nothing on any of these targets:\n"
                                       "        2: other.bin\n"));
    EXPECT_THAT(done.output, Not(HasSubstr("Not supported")));

    const json written = document({folder});
    const jsonView elements = written.view().find("targets").at(0).find("elements");
    EXPECT_EQ(texts(elements, "state"), "would-update up-to-date no-entry disabled");
    // A version that is not known is empty.
    EXPECT_EQ(texts(elements, "installedVersion"), "1.0 2.0 1.0 ");
    EXPECT_EQ(texts(elements, "availableVersion"), "2.0 2.0  ");
}

TEST_F(Matrix, TheDocumentHoldsEverything) {
    TargetBuilder target;
    target.address("10.0.0.7").add(completeBoard("HCN", "NODE", 1).element(completeElement(1, "One \xC3\xBC")));
    const std::string folder = target.write();
    const json written = document({folder});
    const jsonView root = written.view();
    EXPECT_EQ(root.find("archive").find("archiveName").get_string(), "Archive");
    EXPECT_EQ(root.find("archive").find("archiveVariant").get_string(), "Variant");
    const jsonView planned = root.find("targets").at(0);
    EXPECT_EQ(planned.find("folder").get_string(), folder);
    EXPECT_EQ(planned.find("address").get_string(), "10.0.0.7");
    EXPECT_TRUE(planned.find("failure").is_null());
    EXPECT_TRUE(planned.find("supported").get_boolean());
    ASSERT_EQ(planned.find("elements").size(), 1U);
    const jsonView element = planned.find("elements").at(0);
    EXPECT_EQ(element.find("index").get_unsigned(), 0U);
    EXPECT_EQ(element.find("displayName").get_string(), "NODE, SN 1, One \xC3\xBC");
    EXPECT_EQ(element.find("installedVersion").get_string(), "1.0");
    EXPECT_EQ(element.find("availableVersion").get_string(), "2.0");
    EXPECT_EQ(element.find("state").get_string(), "would-update");
    EXPECT_EQ(texts(root.find("unmatchedEntries"), "name"), "io.bin other.bin");
    EXPECT_EQ(root.find("unmatchedEntries").at(1).find("index").get_unsigned(), 2U);
}

TEST_F(Matrix, EachTargetHasItsOwnPlanAndAnEntryNeedsOneTargetOnly) {
    TargetBuilder old;
    TargetBuilder current;
    old.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)));
    current.add(completeBoard("CN", "IO", 1).element(newElement(1)));
    // The same one twice is planned for twice.
    const json written = document({old.write(), current.write(), old.write()});
    const jsonView targets = written.view().find("targets");
    ASSERT_EQ(targets.size(), 3U);
    EXPECT_EQ(texts(targets, "folder"), old.write() + " " + current.write() + " " + old.write());
    EXPECT_EQ(texts(targets.at(0).find("elements"), "state"), "would-update");
    EXPECT_EQ(texts(targets.at(1).find("elements"), "state"), "up-to-date");
    EXPECT_EQ(texts(targets.at(2).find("elements"), "state"), "would-update");
    EXPECT_EQ(texts(written.view().find("unmatchedEntries"), "name"), "other.bin");
}

TEST_F(Matrix, AnEntryIsCountedAsTheDescriptionDoes) {
    const ScratchFolder folder;
    const std::string info = R"({"formatVersion": "1.0", "archiveVersion": "1.0", "productName": "P", )"
                             R"("archiveName": "N"})";
    const std::string rest = R"("sequence": 1, "checksumCrc32": 1, "boardType": "X", "id": 1})";
    folder.write("archive.json", R"({"info": )" + info + R"(, "files": [{"name": "late", "featureLevel": 99, )" + rest +
                                     R"(, {"name": "x", )" + rest + "]}");
    TargetBuilder target;
    const ToolRun done = runCaptured({"matrix", "-a", folder.text(), "--json", "--emulate", target.write()});
    const json written = json::parse(done.output);
    const jsonView entries = written.view().find("unmatchedEntries");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries.at(0).find("index").get_unsigned(), 1U);
    EXPECT_EQ(entries.at(0).find("name").get_string(), "x");
}

TEST_F(Matrix, TellsWhenAnUpdateWouldRefuseTheTarget) {
    TargetBuilder target;
    target.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)).element(completeElement(2)));
    const std::string folder = target.write();
    ASSERT_EQ(runCaptured({"update", "-a", archive_.folder().text(), "-t", "127.0.0.1", "--emulate", folder}).exitCode,
              2);
    const ToolRun done = run({folder});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.output, HasSubstr("\nNot supported by this archive: an update would refuse this target.\n"));
    EXPECT_THAT(cellsOf(done.output, folder), ElementsAre(folder, "127.0.0.1", "1", "0", "1", "0", "[NOT SUPPORTED]"));
    const json written = document({folder});
    EXPECT_TRUE(written.view().find("targets").at(0).find("supported").is_boolean());
    EXPECT_FALSE(written.view().find("targets").at(0).find("supported").get_boolean());
    EXPECT_EQ(texts(written.view().find("targets").at(0).find("elements"), "state"), "would-update no-entry");
}

TEST_F(Matrix, ATargetWithoutElementsIsPlannedFor) {
    TargetBuilder target;
    const ToolRun done = run({target.write()});
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.output, HasSubstr("\nThere are no update elements.\n"));
    EXPECT_EQ(document({target.write()}).view().find("targets").at(0).find("elements").size(), 0U);
}

/// Targets that can be planned for, with one element to update each, and between them those that cannot: refused,
/// without address, incomplete.
class MatrixWithFailures : public Matrix {
protected:
    MatrixWithFailures() {
        good_.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)));
        silent_.noAddress();
        incomplete_.add(board("HCN", "NODE", 1).element(completeElement(1)));
        folders_ = {good_.write(),   refused_.write("{"), good_.write(),
                    silent_.write(), incomplete_.write(), good_.write()};
    }

    TargetBuilder good_;
    TargetBuilder refused_;
    TargetBuilder silent_;
    TargetBuilder incomplete_;
    std::vector<std::string> folders_;
};

TEST_F(MatrixWithFailures, TheOthersHaveTheirTurnAllTheSame) {
    const ToolRun done = run(folders_);
    EXPECT_EQ(done.exitCode, 4);
    EXPECT_EQ(countOf(done.output, "would update\n"), 3U);
    EXPECT_THAT(cellsOf(done.output, folders_[1]),
                ElementsAre(folders_[1], "", "---", "---", "---", "---", "[FAILED]"));
    const std::string reason = folders_[1] + "/target.json: ";
    EXPECT_THAT(done.errors, StartsWith("kvreflash: " + quotedPath(folders_[1]) + " cannot be planned for: " + reason));
    EXPECT_THAT(done.errors, HasSubstr("kvreflash: " + quotedPath(folders_[3]) +
                                       " cannot be planned for: The target has no address.\n"));
    EXPECT_THAT(done.errors,
                HasSubstr("kvreflash: " + quotedPath(folders_[4]) +
                          " cannot be planned for: errors were reported, so that the plan may be "
                          "incomplete\n"
                          "       ERROR 0x2001 (Host PC): There is no parameter PRODUCT[1]/SLOT_COUNT[1] of "
                          "HCN[1].\n"));
    EXPECT_THAT(done.errors, HasSubstr("\nkvreflash: 3 of 6 targets cannot be planned for; " + quotedPath(folders_[1]) +
                                       ": " + reason));
    EXPECT_THAT(done.errors, Not(HasSubstr("Copyright")));
}

TEST_F(MatrixWithFailures, TheDocumentTellsThem) {
    const ToolRun done = run(folders_, {"--json"});
    EXPECT_EQ(done.exitCode, 4);
    const json written = json::parse(done.output);
    const jsonView targets = written.view().find("targets");
    ASSERT_EQ(targets.size(), folders_.size());
    for (const std::size_t index : {0U, 2U, 5U}) {
        EXPECT_EQ(texts(targets.at(index).find("elements"), "state"), "would-update");
        EXPECT_TRUE(targets.at(index).find("failure").is_null());
    }
    for (const std::size_t index : {1U, 3U, 4U}) {
        EXPECT_THAT(done.errors, HasSubstr(targets.at(index).find("message").get_string()));
        EXPECT_NE(targets.at(index).find("message").get_string(), "");
        EXPECT_EQ(targets.at(index).find("failure").get_string(), index == 4 ? "errors" : "target");
        EXPECT_FALSE(targets.at(index).contains("elements"));
    }
    EXPECT_EQ(targets.at(4).find("address").get_string(), "127.0.0.1");
}

TEST_F(Matrix, WithoutAnyPlanNoEntryIsSaidToFitNothing) {
    const ToolRun done = run({"no such folder"}, {"--json"});
    EXPECT_EQ(done.exitCode, 4);
    const json written = json::parse(done.output);
    EXPECT_TRUE(written.view().find("unmatchedEntries").is_array());
    EXPECT_EQ(written.view().find("unmatchedEntries").size(), 0U);
    EXPECT_THAT(run({"no such folder"}).output, Not(HasSubstr("File entries")));
}

TEST_F(Matrix, AnUnreadableArchiveIsToldOnce) {
    TargetBuilder target;
    const ScratchFolder nothing;
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--json"}}) {
        std::vector<std::string> arguments{"matrix", "-a", nothing.text(), "--emulate", target.write()};
        arguments.insert(arguments.end(), {"--emulate", target.write()});
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ToolRun done = runCaptured(arguments);
        EXPECT_EQ(done.exitCode, 3);
        EXPECT_EQ(done.output.empty(), more.empty());
        EXPECT_THAT(done.output, Not(HasSubstr("\"archive\": {")));
        EXPECT_EQ(countOf(done.errors, "ERROR: Failed to read firmware archive.\n"), 1U);
    }
}

TEST_F(Matrix, WhatIsSaidOfTheArchiveIsSaidOnce) {
    archive_.add(entry("sum.bin").board("SUM", 1).noChecksum());
    archive_.folder().write("sum.bin", firmwareImage(KvCVersion("2.0"), 2));
    archive_.write();
    TargetBuilder target;
    target.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)));
    // An element of no board: the warning is the target's own.
    target.add(item("UPDATE_ELEMENT"));
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"-v"}, {"--json"}, {"--json", "-v"}}) {
        const ToolRun done = run({target.write(), target.write()}, more);
        EXPECT_EQ(done.exitCode, 0);
        const bool isDocument = !more.empty() && more.front() == "--json";
        const std::string& messages = isDocument ? done.errors : done.output;
        EXPECT_EQ(countOf(messages, "Copyright"), 1U);
        EXPECT_EQ(countOf(messages, "1 update files needed to be opened"), 1U);
        EXPECT_EQ(countOf(messages, "WARNING: UPDATE_ELEMENT[1] has no UPDATE_INFO parent item!\n"), 2U);
        EXPECT_EQ(isDocument ? json::parse(done.output).is_invalid() : !done.errors.empty(), false);
    }
}

TEST_F(Matrix, WhatIsOddAboutATargetIsSaid) {
    TargetBuilder target;
    target.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)).element(completeElement(1)));
    EXPECT_THAT(run({target.write()}).errors, StartsWith("kvreflash: warning: " + target.write() + "/target.json: "));
}

TEST_F(Matrix, AHundredTargetsCostAHundredTimesOne) {
    const ScratchFolder scratch;
    TargetBuilder target;
    target.add(completeBoard("HCN", "NODE", 1).element(completeElement(1)));
    const auto callsOf = [&](const std::vector<std::string>& folders) {
        const EnvironmentVariable trace{"KV_TRACE", scratch.text() + "/trace" + std::to_string(folders.size())};
        EXPECT_EQ(document(folders).view().find("targets").size(), folders.size());
        return countOf(scratch.read("trace" + std::to_string(folders.size())), "\n");
    };
    const std::size_t one = callsOf({target.write()});
    EXPECT_GT(one, 3U);
    EXPECT_EQ(callsOf(std::vector<std::string>(100, target.write())), 100 * one);
}

} // namespace
