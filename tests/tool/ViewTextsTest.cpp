#include "FindingText.h"
#include "PathTexts.h"
#include "ReasonTexts.h"
#include "ReleaseText.h"
#include "TextTable.h"
#include "ValueTexts.h"
#include "VerificationText.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string_view>

namespace {

using namespace KvNReflasher;

TEST(TextTable, ColumnsAreAsWideAsTheirLongestCell) {
    EXPECT_EQ(tableText({{"No.", "Name"}, {"1", "gr\xC3\xBCn"}, {"12345", "x"}}), "No.   | Name\n"
                                                                                  "------------\n"
                                                                                  "1     | gr\xC3\xBCn\n"
                                                                                  "12345 | x   \n");
}

TEST(TextTable, RowsMayDifferInLength) {
    EXPECT_EQ(tableText({{"A"}, {"1", "22"}, {}}), "A |   \n"
                                                   "------\n"
                                                   "1 | 22\n"
                                                   "  |   \n");
}

TEST(TextTable, ACellTakesOneLineWhateverItHolds) {
    // NOLINTNEXTLINE(misc-misleading-bidirectional): such a character is what the cell has to show
    EXPECT_EQ(tableText({{"A", "B"}, {"x\n\ty\x1B", "\xE2\x80\xAE"}}), "A              | B       \n"
                                                                       "-------------------------\n"
                                                                       "x\\x0A\\x09y\\x1B | \\u{202E}\n");
}

TEST(TextTable, WideCharactersAndMarksAreCountedInColumns) {
    EXPECT_EQ(tableText({{"Name", "B"}, {"\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97", "1"}, {"u\xCC\x88", "2"}}),
              "Name   | B\n"
              "----------\n"
              "\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97 | 1\n"
              "u\xCC\x88      | 2\n");
}

TEST(TextTable, IsEmptyWithoutRows) {
    EXPECT_EQ(tableText({}), "");
}

TEST(ValueTexts, WhatIsNotKnownIsShownAsDashes) {
    EXPECT_EQ(versionCell(KvTVersion{1, "23.2a12"}), "23.2a12");
    EXPECT_EQ(versionCell(std::nullopt), "---");
    EXPECT_EQ(checksumCell(4294967295U), "4294967295");
    EXPECT_EQ(checksumCell(0U), "0");
    EXPECT_EQ(checksumCell(std::nullopt), "---");
}

TEST(ErrorText, SaysWhereTheErrorComesFrom) {
    EXPECT_EQ(errorText({.code = 0x2fff, .text = "Fault at scan.", .function = ""}),
              "ERROR 0x2fff (Host PC): Fault at scan.");
    EXPECT_EQ(errorText({.code = 7, .text = "Worn.", .originNode = 2815, .function = ""}),
              "ERROR 0x7 (S/N 2815): Worn.");
    EXPECT_EQ(errorText({.code = 0, .text = "", .function = ""}), "ERROR 0 (Host PC): ");
}

TEST(ErrorText, TakesOneLineWhateverTheTargetSays) {
    EXPECT_EQ(errorText({.code = 7, .text = "Worn\nand\tgone.", .function = ""}),
              "ERROR 0x7 (Host PC): Worn\\x0Aand\\x09gone.");
}

TEST(ErrorText, AListHasAHeading) {
    EXPECT_EQ(errorsText({}), "");
    EXPECT_EQ(errorsText({{.code = 1, .text = "One.", .function = ""}, {.code = 2, .text = "Two.", .function = ""}}),
              "Errors of the look:\n"
              "       ERROR 0x1 (Host PC): One.\n"
              "       ERROR 0x2 (Host PC): Two.\n");
}

TEST(FindingText, AFindingTakesTwoLinesWhateverNamesItHolds) {
    KvTFinding finding;
    finding.severity = KvESeverity::warning;
    finding.code = "code";
    finding.path = "$['a\nb']";
    finding.message = "One\r\ntwo.";
    finding.hint = "Do\nit.";
    EXPECT_EQ("f/d:1:1: warning: One\\x0D\\x0Atwo. [code]\n    $['a\\x0Ab']: Do\\x0Ait.\n\n0 errors, 1 warning\n",
              findingText({finding}, "f", "d"));
}

TEST(FindingText, ThePathOfTheDescriptionCanBePasted) {
    KvTFinding finding;
    finding.message = "Cannot open archive description file my folder\\d.";
    const std::string text = findingText({finding}, "my folder", "d");
    EXPECT_TRUE(text.starts_with(shellWord("my folder/d") + ":1:1: error: Cannot open archive description file " +
                                 shellWord(archivePath("my folder\\d")) + ". []\n"))
        << text;
}

TEST(FindingText, FindingsAreCountedBySeverity) {
    KvTFinding warning;
    warning.severity = KvESeverity::warning;
    const std::vector<KvTFinding> findings{KvTFinding(), warning, KvTFinding(), warning, warning};
    EXPECT_EQ(countOf(findings, KvESeverity::error), 2U);
    EXPECT_EQ(countOf(findings, KvESeverity::warning), 3U);
    EXPECT_EQ(findingCounts(findings), "2 errors, 3 warnings");
    EXPECT_EQ(findingCounts({warning}), "0 errors, 1 warning");
    EXPECT_EQ(findingText({}, "f", "d"), "No findings.\n");
}

constexpr std::array allReasons{KvEReason::versionDiffers, KvEReason::checksumDiffers, KvEReason::invalid,
                                KvEReason::inactive,       KvEReason::forced,          KvEReason::upToDate,
                                KvEReason::newerInstalled, KvEReason::noEntry,         KvEReason::featureLevel,
                                KvEReason::customLeftOut,  KvEReason::disabled,        KvEReason::carrierBoardMissing};

TEST(ReasonTexts, EachReasonHasASentenceThatSaysWhatFollows) {
    std::set<std::string_view> sentences;
    for (const KvEReason reason : allReasons) {
        const std::string_view sentence = sentenceOf(reason);
        EXPECT_TRUE(sentence.starts_with(reason < KvEReason::upToDate ? "update: " : "no update: ")) << sentence;
        sentences.insert(sentence);
    }
    EXPECT_EQ(sentences.size(), allReasons.size());
}

TEST(ReasonTexts, OnlyWhatIsNotUpdatedHasAShortText) {
    for (const KvEReason reason : allReasons) {
        const bool updates = reason < KvEReason::upToDate;
        EXPECT_EQ(std::string_view(shortTextOf({.update = updates, .reasons = {reason}})).empty(), updates);
    }
    EXPECT_STREQ(shortTextOf({.update = false, .reasons = {KvEReason::upToDate}}), "up to date");
    EXPECT_STREQ(shortTextOf({.update = false, .reasons = {KvEReason::customLeftOut, KvEReason::disabled}}),
                 "disabled");
    EXPECT_STREQ(shortTextOf({}), "");
}

TEST(ReasonTexts, EachFilterNamesItsOption) {
    EXPECT_STREQ(sentenceOf(KvEHiddenBy::boardTypeFilter), "its board type is not in --board-type");
    EXPECT_STREQ(sentenceOf(KvEHiddenBy::serialNumberFilter), "its serial number is not in --serial-number");
    EXPECT_STREQ(sentenceOf(KvEHiddenBy::elementNameFilter), "its name is not in --element");
    EXPECT_TRUE(std::string_view(sentenceOf(KvEHiddenBy::configuration)).starts_with("--configuration "));
}

/// A plan of some elements, each with an entry of version 2.0 and checksum 2.
KvTPlan planOf(std::uint32_t count) {
    KvTPlan plan;
    for (std::uint32_t index = 0; index < count; ++index) {
        KvTPlannedElement& element = plan.elements.emplace_back();
        element.index = index;
        element.displayName = "E" + std::to_string(index);
        element.entry.emplace().version = KvTVersion{2, "2.0"};
        element.entry->checksumCrc32 = 2;
    }
    return plan;
}

/// Each result once.
KvTVerification eachResult() {
    KvTVerification verification;
    verification.look.succeeded = true;
    for (std::uint32_t index = 0; index < verifiedCount; ++index) {
        verification.elements.push_back({.index = index, .result = static_cast<KvEVerified>(index), .found = {}});
    }
    return verification;
}

TEST(VerificationText, EachResultHasItsWords) {
    EXPECT_STREQ(wordsFor(KvEVerified::asExpected), "as expected");
    EXPECT_STREQ(wordsFor(KvEVerified::differs), "differs");
    EXPECT_STREQ(wordsFor(KvEVerified::unchanged), "unchanged");
    EXPECT_STREQ(wordsFor(KvEVerified::gone), "gone");
    EXPECT_STREQ(wordsFor(KvEVerified::notJudged), "not judged");
    EXPECT_STREQ(wordsFor(KvEVerified::notListed), "not listed");
}

TEST(VerificationText, WhatIsNotAsExpectedIsListedAndAllIsCounted) {
    KvTVerification verification = eachResult();
    verification.elements.back().found = KvTInstalled{KvTVersion{3, "3.0"}, 0, false, false};
    const std::string text = verificationText(planOf(verifiedCount), verification);
    EXPECT_EQ(text.find("| E2 "), std::string::npos) << "it is as expected";
    for (const char* row :
         {"0   | E0             | 2.0      | ---   | 2                 | ---            | not listed ",
          "1   | E1             | 2.0      | ---   | 2                 | ---            | gone ",
          "3   | E3             | 2.0      | ---   | 2                 | ---            | not judged ",
          "4   | E4             | 2.0      | ---   | 2                 | ---            | unchanged ",
          "5   | E5             | 2.0      | 3.0   | 2                 | 0              | differs, not valid, "}) {
        EXPECT_NE(text.find(std::string("\n") + row), std::string::npos) << row;
    }
    EXPECT_NE(text.find("differs, not valid, not active\n"), std::string::npos);
    EXPECT_TRUE(
        text.starts_with("\nNo. | Update element | Expected | Found | Expected checksum | Found checksum | Result "));
    EXPECT_TRUE(text.ends_with("\n\nVerification: 1 as expected, 1 differs, 1 unchanged, 1 gone, 1 not judged, 1 not "
                               "listed\n"));
}

TEST(VerificationText, WithoutFaultsOnlyTheCountIsTold) {
    KvTVerification verification;
    verification.look.succeeded = true;
    EXPECT_EQ(verificationText(planOf(1), verification), "\nVerification: 0 as expected\n");
    verification.elements.push_back({.index = 0, .result = KvEVerified::asExpected, .found = {}});
    EXPECT_EQ(verificationText(planOf(1), verification), "\nVerification: 1 as expected\n");
}

TEST(VerificationText, AFailedLookAndErrorsOfALookAreTold) {
    KvTVerification verification;
    verification.look.message = "it is gone";
    verification.look.errors.push_back({.code = 1, .text = "One.", .function = ""});
    EXPECT_EQ(verificationText(planOf(1), verification), "\nVerification: the target cannot be looked at: it is gone\n"
                                                         "Errors of the look:\n"
                                                         "       ERROR 0x1 (Host PC): One.\n");
    verification.look.succeeded = true;
    EXPECT_EQ(verificationText(planOf(1), verification), "\nVerification: 0 as expected\n"
                                                         "Errors of the look:\n"
                                                         "       ERROR 0x1 (Host PC): One.\n");
}

TEST(VerificationText, AnElementThatAPlanLeavesIsNamed) {
    KvTVerification verification;
    verification.look.succeeded = true;
    verification.elements.push_back(
        {.index = 0, .result = KvEVerified::differs, .found = KvTInstalled(), .leftByPlan = true});
    const std::string text = verificationText(planOf(1), verification);
    EXPECT_NE(text.find("'E0' reports the checksum 0: a plan leaves it, and update --force installs it.\n"),
              std::string::npos);
}

TEST(VerificationText, ElementsWithoutEntryAreListed) {
    KvTPlan plan = planOf(3);
    EXPECT_EQ(elementsWithoutEntryText(plan), "");
    plan.elements[1].entry.reset();
    EXPECT_EQ(elementsWithoutEntryText(plan), "\nThe archive has no entry for these elements:\n        E1\n");
    plan.elements[1].displayName = "E\n1";
    EXPECT_EQ(elementsWithoutEntryText(plan), "\nThe archive has no entry for these elements:\n        E\\x0A1\n");
}

TEST(ReleaseText, SaysWhoVouchesForAnArchive) {
    KvTRelease release;
    EXPECT_EQ(releaseText(release), "");
    release.isUnsealedAccepted = true;
    EXPECT_EQ(releaseText(release), "not sealed (accepted with --unsealed)");
    release.created = "2026-02-28T08:00:00Z";
    release.seal = KvESeal::sealed;
    EXPECT_EQ(releaseText(release), "sealed 2026-02-28T08:00:00Z and not signed (accepted with --unsealed)");
    release.isUnsealedAccepted = false;
    EXPECT_EQ(releaseText(release), "sealed 2026-02-28T08:00:00Z and not signed");
    release.seal = KvESeal::signedByStranger;
    release.keyKind = "ssh-ed25519";
    release.keyFingerprint = "SHA256:abc";
    EXPECT_EQ(releaseText(release), "sealed 2026-02-28T08:00:00Z and signed by ssh-ed25519 SHA256:abc, which nobody "
                                    "here was told to trust");
    release.seal = KvESeal::trusted;
    release.signer = "release@korvel";
    EXPECT_EQ(releaseText(release),
              "sealed 2026-02-28T08:00:00Z and signed by release@korvel (ssh-ed25519 SHA256:abc)");
}

} // namespace
