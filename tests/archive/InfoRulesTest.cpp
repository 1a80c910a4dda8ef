#include "ArchiveFixture.h"

#include <array>
#include <string>
#include <vector>

namespace {

using InfoRules = ArchiveTest;

std::wstring corrupt(const std::wstring& what) {
    return L"ERROR: The archive description file is corrupt. " + what + L"\n";
}

const std::wstring otherRelease =
    L"ERROR: This firmware archive cannot be processed by the update tool.\n"
    L"       Do not use firmware archives with update tools from different Korvel releases.\n";

TEST_F(InfoRules, EveryFieldIsStored) {
    EXPECT_TRUE(readDescription(ArchiveBuilder()
                                    .info("formatVersion", R"("1.2.3")")
                                    .info("archiveVersion", R"("23.2b4.1")")
                                    .info("productName", "\"Ger\xC3\xA4t\"")
                                    .info("archiveVariant", R"("lab")")
                                    .info("archiveName", R"("a \"name\"")")));
    EXPECT_EQ(KvCVersion(1, 2, 3, 0, 0, 0), archive().info().formatVersion);
    EXPECT_EQ(KvCVersion(23, 2, 0, 2, 4, 1), archive().info().archiveVersion);
    EXPECT_EQ("Ger\xC3\xA4t", archive().info().productName.view());
    EXPECT_EQ("lab", archive().info().archiveVariant.view());
    EXPECT_EQ("a \"name\"", archive().info().archiveName.view());
}

TEST_F(InfoRules, TextsMayBeEmptyAndTheVariantMayBeAbsent) {
    EXPECT_TRUE(readDescription(
        ArchiveBuilder().info("productName", R"("")").info("archiveName", R"("")").withoutInfo("archiveVariant")));
    EXPECT_EQ(L"", messages());
    EXPECT_TRUE(archive().info().archiveVariant.isEmpty());
    EXPECT_TRUE(readDescription(ArchiveBuilder().info("archiveVariant", R"("")")));
}

TEST_F(InfoRules, TheBlockMustBeAnObject) {
    EXPECT_FALSE(readDescription(ArchiveBuilder().withoutRoot("info")));
    EXPECT_EQ(corrupt(L"Property \"info\" is missing or invalid."), messages());
    for (const char* value : {"null", "[]", "\"1.0\"", "1", "false"}) {
        SCOPED_TRACE(value);
        EXPECT_FALSE(readDescription(ArchiveBuilder().root("info", value)));
        EXPECT_EQ(corrupt(L"Property \"info\" is missing or invalid."), messages());
    }
}

TEST_F(InfoRules, MandatoryFieldsMustBeTexts) {
    for (const std::string key : {"formatVersion", "archiveVersion", "productName", "archiveName"}) {
        SCOPED_TRACE(key);
        const std::wstring message =
            corrupt(L"\"" + std::wstring(key.begin(), key.end()) + L"\" is missing or invalid.");
        EXPECT_FALSE(readDescription(ArchiveBuilder().withoutInfo(key)));
        EXPECT_EQ(message, messages());
        for (const char* value : {"null", "1", "1.0", "true", "[\"1.0\"]", "{}"}) {
            SCOPED_TRACE(value);
            EXPECT_FALSE(readDescription(ArchiveBuilder().info(key, value)));
            EXPECT_EQ(message, messages());
        }
    }
}

TEST_F(InfoRules, AVariantThatIsPresentMustBeAText) {
    for (const char* value : {"null", "1", "true", "[]", "{}"}) {
        SCOPED_TRACE(value);
        EXPECT_FALSE(readDescription(ArchiveBuilder().info("archiveVariant", value)));
        EXPECT_EQ(corrupt(L"\"archiveVariant\" is invalid."), messages());
    }
}

TEST_F(InfoRules, AllZeroVersionsAreInvalid) {
    for (const std::string key : {"formatVersion", "archiveVersion"}) {
        for (const char* value :
             {R"("")", R"("0")", R"("0.0.0.0")", R"("one")", R"("1.")", R"("1.0 ")", R"(" 1.0")", R"("256.1")",
              R"("1.256")", R"("-1.0")", R"("v1.0")", R"("#0")", R"("1.0\u0000junk")"}) {
            SCOPED_TRACE(key + " " + value);
            EXPECT_FALSE(readDescription(ArchiveBuilder().info(key, value)));
            EXPECT_EQ(corrupt(L"\"" + std::wstring(key.begin(), key.end()) + L"\" is invalid."), messages());
        }
    }
}

TEST_F(InfoRules, EveryFormatOfRelease1IsAccepted) {
    for (const char* value : {R"("1")", R"("1.0")", R"("01.0")", R"("1.255")", R"("1.2.3")", R"("1.0.0.1")",
                              R"("1.0a3")", R"("1.9b2.1")"}) {
        SCOPED_TRACE(value);
        EXPECT_TRUE(readDescription(ArchiveBuilder().info("formatVersion", value)));
        EXPECT_EQ(L"", messages());
    }
}

TEST_F(InfoRules, FormatsOfOtherReleasesAreRefused) {
    for (const char* value : {R"("2.0")", R"("2")", R"("0.1")", R"("0.0.0.1")", R"("10.0")", R"("255.1")"}) {
        SCOPED_TRACE(value);
        EXPECT_FALSE(readDescription(ArchiveBuilder().info("formatVersion", value)));
        EXPECT_EQ(otherRelease, messages());
    }
}

/// A way to break a description, in the order in which the breaks are found.
struct Break {
    const char* name;
    void (*apply)(ArchiveBuilder&);
    std::wstring message;
};

const std::vector<Break>& breaks() {
    static const std::vector<Break> all = {
        {"info", [](ArchiveBuilder& b) { b.root("info", "[]"); }, corrupt(L"Property \"info\" is missing or invalid.")},
        {"formatVersion", [](ArchiveBuilder& b) { b.info("formatVersion", "1"); },
         corrupt(L"\"formatVersion\" is missing or invalid.")},
        {"archiveVersion", [](ArchiveBuilder& b) { b.withoutInfo("archiveVersion"); },
         corrupt(L"\"archiveVersion\" is missing or invalid.")},
        {"productName", [](ArchiveBuilder& b) { b.info("productName", "null"); },
         corrupt(L"\"productName\" is missing or invalid.")},
        {"archiveVariant", [](ArchiveBuilder& b) { b.info("archiveVariant", "null"); },
         corrupt(L"\"archiveVariant\" is invalid.")},
        {"archiveName", [](ArchiveBuilder& b) { b.withoutInfo("archiveName"); },
         corrupt(L"\"archiveName\" is missing or invalid.")},
        {"files", [](ArchiveBuilder& b) { b.withoutRoot("files"); },
         corrupt(L"Property \"files\" is missing or invalid.")}};
    return all;
}

TEST_F(InfoRules, OfTwoBreaksTheEarlierOneIsReportedAlone) {
    for (std::size_t first = 0; first < breaks().size(); ++first) {
        for (std::size_t second = first; second < breaks().size(); ++second) {
            SCOPED_TRACE(std::string(breaks()[first].name) + " and " + breaks()[second].name);
            ArchiveBuilder builder;
            builder.entry("1");
            breaks()[second].apply(builder);
            breaks()[first].apply(builder);
            EXPECT_FALSE(readDescription(builder));
            EXPECT_EQ(breaks()[first].message, messages());
        }
    }
}

TEST_F(InfoRules, AVersionIsHeldAgainstItsRulesBeforeTheNextField) {
    ArchiveBuilder zeroFormat;
    zeroFormat.info("formatVersion", R"("0.0")").info("archiveVersion", "1");
    EXPECT_FALSE(readDescription(zeroFormat));
    EXPECT_EQ(corrupt(L"\"formatVersion\" is invalid."), messages());

    ArchiveBuilder otherFormat;
    otherFormat.info("formatVersion", R"("2.0")").info("archiveVersion", "1");
    EXPECT_FALSE(readDescription(otherFormat));
    EXPECT_EQ(otherRelease, messages());

    ArchiveBuilder zeroArchive;
    zeroArchive.info("archiveVersion", R"("0.0")").withoutInfo("productName");
    EXPECT_FALSE(readDescription(zeroArchive));
    EXPECT_EQ(corrupt(L"\"archiveVersion\" is invalid."), messages());
}

TEST_F(InfoRules, FieldsBeforeTheFailureStayStored) {
    EXPECT_FALSE(readDescription(ArchiveBuilder().withoutInfo("archiveName").entry(goodEntry())));
    EXPECT_EQ(KvCVersion(1, 0, 0, 0, 0, 0), archive().info().formatVersion);
    EXPECT_EQ(KvCVersion(23, 2, 1, 0, 0, 0), archive().info().archiveVersion);
    EXPECT_EQ("Rack firmware", archive().info().productName.view());
    EXPECT_EQ("standard", archive().info().archiveVariant.view());
    EXPECT_TRUE(archive().info().archiveName.isEmpty());
    EXPECT_TRUE(archive().files().empty());

    EXPECT_FALSE(readDescription(ArchiveBuilder().info("formatVersion", R"("2.0")")));
    EXPECT_EQ(KvCVersion(2, 0, 0, 0, 0, 0), archive().info().formatVersion);
    EXPECT_EQ(0U, archive().info().archiveVersion.getAsULong64());
}

} // namespace
