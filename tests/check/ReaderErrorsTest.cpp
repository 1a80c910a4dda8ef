#include "CheckFixture.h"
#include "RandomDescriptions.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace {

using KvNReflasher::KvESeverity;
using KvNReflasher::KvTFinding;
using testing::HasSubstr;

using Check = CheckTest;

/// The archive is refused in the reader's words exactly when the reader refuses it.
class CheckProperty : public CheckTest {
protected:
    bool fitsReader(const std::string& text) {
        SCOPED_TRACE(text);
        const std::vector<KvTFinding> findings = check(text);
        std::vector<std::string> errors;
        for (const KvTFinding& finding : findings) {
            EXPECT_NE("", finding.message);
            EXPECT_NE("", finding.hint);
            EXPECT_NE("", finding.code);
            if (finding.severity == KvESeverity::error) {
                errors.push_back(finding.message);
            }
        }
        EXPECT_TRUE(std::is_sorted(findings.begin(), findings.end(), [](const KvTFinding& a, const KvTFinding& b) {
            return std::pair(a.line, a.column) < std::pair(b.line, b.column);
        }));
        const std::string first = readersFirstError();
        EXPECT_EQ(first.empty(), errors.empty()) << codesOf(findings);
        if (!first.empty()) {
            EXPECT_THAT(errors, testing::Contains(first));
            ++refused_;
        } else {
            ++read_;
        }
        most_ = std::max(most_, errors.size());
        return !HasFailure();
    }

    unsigned refused_ = 0;
    unsigned read_ = 0;
    std::size_t most_ = 0;
};

TEST_F(CheckProperty, ThereAreErrorsExactlyWhenTheReaderRefuses) {
    RandomDescriptions random(20260);
    for (unsigned round = 0; round < 800; ++round) {
        JsonModel description = random.description(4);
        for (std::size_t count = random.below(4); count > 0; --count) {
            random.mutate(description);
        }
        std::string text = description.write();
        if (random.oneIn(8)) {
            random.scramble(text);
        }
        // Half of the entries need a checksum from their file.
        folder().write("a.bin", random.oneIn(2) ? bitstream(5) : "content");
        ASSERT_TRUE(fitsReader(text));
    }
    EXPECT_GT(read_, 50U);
    EXPECT_GT(refused_, 300U);
    EXPECT_GT(most_, 5U);
}

struct Fault {
    const char* code;
    std::string description;
};

std::string entryText(const ObjectText& entry) {
    return ArchiveBuilder().entry(entry).text();
}

/// The place of a value in the only line of a description.
std::string placeOfValue(const std::string& text, std::string_view value, const char* path) {
    return "1:" + std::to_string(text.find(value) + 1) + " " + path;
}

TEST_F(Check, EachRuleOfTheReaderHasACode) {
    const auto entryFault = [](const char* code, const ObjectText& entry) { return Fault{code, entryText(entry)}; };
    const std::vector<Fault> faults = {
        {"info-missing", ArchiveBuilder().withoutRoot("info").text()},
        {"format-version-missing", ArchiveBuilder().info("formatVersion", "1").text()},
        {"format-version-invalid", ArchiveBuilder().info("formatVersion", "\"x\"").text()},
        {"format-version-unsupported", ArchiveBuilder().info("formatVersion", "\"2.0\"").text()},
        {"archive-version-missing", ArchiveBuilder().withoutInfo("archiveVersion").text()},
        {"archive-version-invalid", ArchiveBuilder().info("archiveVersion", "\"x\"").text()},
        {"product-name-missing", ArchiveBuilder().info("productName", "null").text()},
        {"archive-variant-invalid", ArchiveBuilder().info("archiveVariant", "null").text()},
        {"archive-name-missing", ArchiveBuilder().info("archiveName", "[]").text()},
        {"files-missing", ArchiveBuilder().withoutRoot("files").text()},
        {"entry-no-object", ArchiveBuilder().entry("5").text()},
        entryFault("feature-level-invalid", goodEntry().set("featureLevel", "-1")),
        entryFault("mandatory-property", goodEntry().remove("sequence")),
        {"board-without-type", entryText(entryWithBoards(R"({"id": 5})"))},
        entryFault("property-type", goodEntry().set("boardId", "\"x\"")),
        entryFault("property-elements", goodEntry().set("boardId", "[1, \"x\"]")),
        entryFault("version-invalid", goodEntry().set("version", "\"x\"")),
        entryFault("mode-unknown", goodEntry().set("mode", "\"x\"")),
        {"entry-property-in-board", entryText(entryWithBoards(goodBoard().set("mode", "\"upgrade\"").text()))},
        entryFault("id-and-target-path", goodEntry().set("targetPath", "\"x\"")),
        entryFault("no-address", goodEntry().remove("id")),
        entryFault("checksum-file-missing", goodEntry().remove("checksumCrc32").set("name", "\"b.bin\"")),
        entryFault("checksum-unreadable", goodEntry().remove("checksumCrc32")),
    };
    for (const Fault& fault : faults) {
        const std::vector<KvTFinding> findings = check(fault.description);
        std::vector<KvTFinding> errors;
        std::copy_if(findings.begin(), findings.end(), std::back_inserter(errors),
                     [](const KvTFinding& finding) { return finding.severity == KvESeverity::error; });
        EXPECT_EQ(fault.code, codesOf(errors)) << fault.description;
    }
}

TEST_F(Check, AnErrorStandsAtTheValueConcerned) {
    const auto check = [this](const ObjectText& entry, std::string_view value, const char* path) {
        const std::string text = entryText(entry);
        EXPECT_EQ(placeOfValue(text, value, path), placeOf(onlyFinding(text))) << text;
    };
    check(goodEntry().set("mode", "\"wrong\""), "\"wrong\"", "$.files[0].mode");
    check(goodEntry().set("boardVariant", "false"), "false", "$.files[0].boardVariant");
    check(goodEntry().set("name", "false"), "false", "$.files[0].name");
    check(goodEntry().set("sequence", "1.5"), "1.5", "$.files[0].sequence");
    check(entryWithBoards(R"({"boardType": "QB", "id": 1}, {"boardType": "QC", "id": null})"), "null",
          "$.files[0].boards[1].id");
    check(entryWithBoards(R"({"boardType": "QB", "id": 1, "version": "7.0"})"), "\"7.0\"",
          "$.files[0].boards[0].version");
}

TEST_F(Check, ABadItemOfAnArrayIsPointedAt) {
    const auto check = [this](const ObjectText& entry, std::string_view value, const char* path, const char* hint) {
        const std::string text = entryText(entry);
        const KvTFinding finding = onlyFinding(text);
        EXPECT_EQ("property-elements", finding.code);
        EXPECT_EQ(placeOfValue(text, value, path), placeOf(finding)) << text;
        EXPECT_EQ(hint, finding.hint);
    };
    check(goodEntry().set("boardType", "[\"QB1\", 555]"), "555", "$.files[0].boardType[1]", "Write a text.");
    check(goodEntry().set("boardVariant", "[null, \"A\", false, 1]"), "false", "$.files[0].boardVariant[2]",
          "Write a text, or null for boards without variant.");
    for (const char* key : {"boardId", "hwCompatibilityId", "swCompatibilityId"}) {
        check(goodEntry().set(key, "[1, 2, \"3\"]"), "\"3\"", joined("$.files[0].", key, "[2]").c_str(),
              "Write a number without sign, fraction and exponent.");
    }
    check(entryWithBoards(R"({"boardType": "QB", "id": 1}, {"boardType": ["QC", 555], "id": 1})"), "555",
          "$.files[0].boards[1].boardType[1]", "Write a text.");
}

TEST_F(Check, AFileOfASimilarNameIsSuggestedForOneThatIsMissing) {
    folder().write("qb4120-fpga.kbs", "content");
    const auto findingOn = [this](const ObjectText& entry) { return onlyFinding(entryText(entry)); };
    const ObjectText entry = goodEntry().set("name", "\"qb4120-fgpa.kbs\"");
    EXPECT_EQ("update-file-missing", findingOn(entry).code);
    EXPECT_EQ("Did you mean \"qb4120-fpga.kbs\"?", findingOn(entry).hint);
    const KvTFinding error = findingOn(ObjectText(entry).remove("checksumCrc32"));
    EXPECT_EQ("checksum-file-missing", error.code);
    EXPECT_EQ("Did you mean \"qb4120-fpga.kbs\"?", error.hint);
    EXPECT_THAT(findingOn(goodEntry().set("name", "\"settings.cfg\"")).hint, HasSubstr("Put the file"));
}

TEST_F(Check, WhatIsMissingIsReportedAtTheObjectThatLacksIt) {
    EXPECT_EQ("$.files[0]", onlyFinding(entryText(goodEntry().remove("id"))).path);
    EXPECT_EQ("$.info", onlyFinding(ArchiveBuilder().withoutInfo("archiveName").entry(goodEntry()).text()).path);
    EXPECT_EQ("$", onlyFinding(ArchiveBuilder().withoutRoot("files").text()).path);
}

TEST_F(Check, AMissingMandatoryPropertyIsNamed) {
    const auto hint = [this](const ObjectText& entry) { return onlyFinding(entryText(entry)).hint; };
    EXPECT_THAT(hint(goodEntry().remove("name")), HasSubstr("\"name\""));
    EXPECT_THAT(hint(goodEntry().remove("sequence")), HasSubstr("\"sequence\""));
    EXPECT_THAT(hint(goodEntry().set("sequence", "-1")), HasSubstr("\"sequence\""));
    EXPECT_THAT(hint(goodEntry().set("sequence", "18446744073709551616")), HasSubstr("\"sequence\""));
    EXPECT_THAT(hint(goodEntry().remove("boardType")), HasSubstr("either"));
    EXPECT_THAT(hint(entryWithBoards(goodBoard().text()).set("boardType", "\"QB\"")), HasSubstr("not both"));
    EXPECT_THAT(hint(entryWithBoards("")), HasSubstr("at least one"));
}

TEST_F(Check, AllEntriesAndAllUpdateFilesAreExamined) {
    const ObjectText noFile = goodEntry().remove("checksumCrc32").set("name", "\"none.bin\"").set("id", "6");
    const std::string text = ArchiveBuilder()
                                 .info("productName", "1")
                                 .entry("5")
                                 .entry(noFile)
                                 .entry(goodEntry().set("mode", "1").set("id", "null"))
                                 .entry(ObjectText(noFile).set("id", "7"))
                                 .text();
    EXPECT_EQ("product-name-missing entry-no-object checksum-file-missing property-type property-type "
              "checksum-file-missing",
              codes(text));
}

TEST_F(Check, TheMessageIsTheReadersOwnWithItsNames) {
    const KvTFinding finding = onlyFinding(entryText(goodEntry()
                                                         .remove("checksumCrc32")
                                                         .set("name", "\"gr\xC3\xB6\xC3\x9F"
                                                                      "e.bin\"")));
    EXPECT_THAT(finding.message, HasSubstr("Cannot read checksum from update file. '"));
    EXPECT_THAT(finding.message, HasSubstr("gr\xC3\xB6\xC3\x9F"
                                           "e.bin' not found."));
}

TEST_F(Check, AMessageOfTwoLinesBecomesOneSentenceAfterTheOther) {
    EXPECT_EQ("This firmware archive cannot be processed by the update tool. Do not use firmware archives with update "
              "tools from different Korvel releases.",
              onlyFinding(ArchiveBuilder().info("formatVersion", "\"2.0\"").entry(goodEntry()).text()).message);
}

TEST_F(Check, InvalidJsonIsFoundWhereItBegins) {
    const KvTFinding finding = onlyFinding("{\n  \"info\": {\"a\": \"\xC3\xA9\xC3\xA9\" oops}\n}");
    EXPECT_EQ("invalid-json", finding.code);
    EXPECT_EQ("2:22 $", placeOf(finding));
    EXPECT_EQ("This is not JSON syntax.", finding.hint);
    EXPECT_EQ(readersFirstError(), finding.message);
}

TEST_F(Check, FrequentFaultsOfJsonAreToldWithTheirRemedy) {
    const auto hint = [this](std::string_view text) {
        for (const KvTFinding& finding : check(text)) {
            if (finding.code == "invalid-json") {
                return finding.hint;
            }
        }
        return std::string();
    };
    const std::string comment = R"(JSON has no comments; every object may have a key "comment".)";
    for (const char* text : {"// x\n{}", "{ // x\n}", "[1, /* x */ 2]", "{\"info\": {} // x\n}"}) {
        EXPECT_EQ(comment, hint(text)) << text;
    }
    for (const char* text : {"[1,,2]", "[1,\n ,2]", "{\"info\": {},,\n}"}) {
        EXPECT_EQ("Remove one of the commas.", hint(text)) << text;
    }
    for (const char* text : {"[1, 2,]", "{\"info\": {},\n}"}) {
        EXPECT_EQ("Remove the comma before it.", hint(text)) << text;
    }
    const std::string_view utf16("\xFF\xFE{\0}\0", 6);
    const std::string_view utf16WithoutMark("{\0}\0", 4);
    for (const std::string_view text : {utf16, utf16WithoutMark, std::string_view("\xFE\xFF\0{\0}", 6),
                                        std::string_view("{\"info\": \"caf\xE9\"}"), std::string_view("[\"\xC3\"]")}) {
        EXPECT_EQ("Save the file as UTF-8.", hint(text)) << text;
    }
    for (const char* text : {"[/]", "[1 , oops]", "[,1]", "{\xC3\xA9}", "[oops, \"\xE9\"]"}) {
        EXPECT_EQ("This is not JSON syntax.", hint(text)) << text;
    }
}

TEST_F(Check, ADescriptionThatCannotBeOpenedIsAnError) {
    const std::vector<KvTFinding> findings = findingsOfArchive(options());
    EXPECT_EQ("description-unreadable", codesOf(findings));
    EXPECT_EQ("1:1 $", placeOf(findings.front()));
    EXPECT_EQ(readersFirstError(), findings.front().message);
}

TEST_F(Check, OfWhatIsNoRegularFileTheHintSaysWhatItIs) {
    std::filesystem::create_directory(folder().path() / "folder.bin");
    const KvTFinding finding =
        onlyFinding(entryText(goodEntry().set("name", "\"folder.bin\"").remove("checksumCrc32")));
    EXPECT_EQ("checksum-unreadable", finding.code);
    EXPECT_EQ("Cannot read checksum from update file folder.bin.", finding.message);
    EXPECT_EQ("It is a folder, not a regular file.", finding.hint);
    std::filesystem::remove(folder().path() / "archive.json");
    std::filesystem::create_directory(folder().path() / "archive.json");
    const std::vector<KvTFinding> findings = findingsOfArchive(options());
    ASSERT_EQ("description-unreadable", codesOf(findings));
    EXPECT_EQ("It is a folder, not a regular file.", findings.front().hint);
}

TEST_F(Check, ADescriptionOfMoreThan256MebibytesIsAnErrorThatSaysSo) {
    folder().write("archive.json", entryText(goodEntry()));
    std::error_code error;
    std::filesystem::resize_file(folder().path() / "archive.json", std::uintmax_t(4) << 30U, error);
    if (error) {
        GTEST_SKIP() << "no room for a large file: " << error.message();
    }
    const std::vector<KvTFinding> findings = findingsOfArchive(options());
    ASSERT_EQ("description-unreadable", codesOf(findings));
    EXPECT_EQ("It is larger than 256 MiB, the most that is read.", findings.front().hint);
}

TEST_F(Check, ColumnsCountCharactersAndNoByteOrderMark) {
    const std::string text =
        "\xEF\xBB\xBF" + entryText(goodEntry().set("comment", "\"\xC3\xA9\xE2\x82\xAC\"").set("mode", "7"));
    // Three bytes of the mark, one of the first and two of the second character of the comment are not counted.
    EXPECT_EQ(text.find("7}") + 1 - 6, onlyFinding(text).column);
}

TEST_F(Check, AnEntryForNewerToolsIsAWarningAndNothingElseOfItIsLookedAt) {
    const KvTFinding finding = onlyFinding(
        entryText(ObjectText().set("featureLevel", "3").set("new", "1").set("version", "\"01\"").set("boardId", "[]")));
    EXPECT_EQ("entry-skipped", finding.code);
    EXPECT_EQ(KvESeverity::warning, finding.severity);
    EXPECT_EQ("File entry 0 is not supported. Ignoring this entry.", finding.message);
    EXPECT_EQ("$.files[0].featureLevel", finding.path);
}

TEST_F(Check, TheReadersNewsOfOpenedFilesIsNoFinding) {
    folder().write("a.bin", bitstream(5));
    EXPECT_EQ("", codes(entryText(goodEntry().remove("checksumCrc32"))));
}

} // namespace
