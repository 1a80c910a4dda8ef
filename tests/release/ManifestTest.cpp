#include "Manifest.h"

#include "Timestamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* zeros = "0000000000000000000000000000000000000000000000000000000000000000";

KvTManifest sample() {
    KvTManifest manifest;
    manifest.archive = {"Name", "1.2", "Product \u00FC", "1.0", "A"};
    manifest.created = *momentOf("2026-11-22T10:15:01Z");
    manifest.files = {{"archive.json", 12, {}}, {"sub/a.kfw", 4096, sha256Of(bytesOf("abc"))}};
    return manifest;
}

std::string text(const std::string& files, const std::string& format = "kvreflash.manifest",
                 const std::string& version = "1", const std::string& created = "\"2026-11-22T10:15:01Z\"") {
    return R"({"format": {"name": ")" + format + R"(", "version": )" + version +
           R"(}, "archive": {"archiveName": "", "archiveVersion": "1.0", "productName": "P", "formatVersion": "1.0",
           "archiveVariant": ""}, "created": )" +
           created + R"(, "files": )" + files + "}";
}

std::string file(const std::string& name, const std::string& size = "1", const std::string& digest = zeros) {
    return R"({"name": ")" + name + R"(", "size": )" + size + R"(, "sha256": ")" + digest + "\"}";
}

/// Why it is refused; empty if it is not.
std::string whyNot(const std::string& manifest) {
    std::string reason;
    return parseManifest(manifest, reason) ? "" : reason;
}

TEST(Manifest, IsReadAsItIsWritten) {
    std::string reason;
    const std::optional<KvTManifest> read = parseManifest(textOf(sample()), reason);
    ASSERT_TRUE(read) << reason;
    EXPECT_EQ(textOf(*read), textOf(sample()));
    EXPECT_EQ(read->archive.productName, "Product \u00FC");
    EXPECT_EQ(read->size(), 4108U);
}

TEST(Manifest, HasItsMembersInOrder) {
    EXPECT_EQ(textOf(sample()), R"({
    "format": {
        "name": "kvreflash.manifest",
        "version": 1
    },
    "archive": {
        "archiveName": "Name",
        "archiveVersion": "1.2",
        "productName": "Product )"
                                "\u00FC"
                                R"(",
        "formatVersion": "1.0",
        "archiveVariant": "A"
    },
    "created": "2026-11-22T10:15:01Z",
    "files": [
        {
            "name": "archive.json",
            "size": 12,
            "sha256": "0000000000000000000000000000000000000000000000000000000000000000"
        },
        {
            "name": "sub/a.kfw",
            "size": 4096,
            "sha256": "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"
        }
    ]
}
)");
}

TEST(Manifest, MembersThatAreNotKnownAreForLater) {
    EXPECT_EQ(whyNot(text("[" + file("a") + "], \"lowestVersion\": \"1.0\"")), "");
    EXPECT_EQ(whyNot(text("[]")), "");
}

TEST(Manifest, OfAnotherKindIsRefused) {
    EXPECT_TRUE(whyNot("{").starts_with("it is not valid JSON: "));
    EXPECT_TRUE(whyNot(text("[]") + "x").starts_with("it is not valid JSON: "));
    for (const std::string& other : {std::string("{}"), std::string("[]"), text("[]", "kvreflash.plan")}) {
        EXPECT_EQ(whyNot(other), "its format is not 'kvreflash.manifest'");
    }
    EXPECT_EQ(whyNot(text("[]", "kvreflash.manifest", "2")), "its format has another version than 1");
    for (const char* time :
         {R"("today")", R"("2242-03-16T12:56:32Z")", R"("9999-12-31T23:59:59Z")", R"("1969-12-31T23:59:59Z")"}) {
        EXPECT_EQ(whyNot(text("[]", "kvreflash.manifest", "1", time)),
                  "its member 'created' is not a time from 1970 to 2242-03-16T12:56:31Z");
    }
    EXPECT_EQ(whyNot(text("[]", "kvreflash.manifest", "1", R"("2242-03-16T12:56:31Z")")), "");
    EXPECT_EQ(whyNot(text("[]", "kvreflash.manifest", "1", "5")), "its member 'created' is not a text");
    EXPECT_EQ(whyNot(text("{}")), "its member 'files' is not an array");
    EXPECT_EQ(whyNot(text("[" + file("a", "-1") + "]")), "the size of 'a' is not a number");
    EXPECT_EQ(whyNot(text("[" + file("a", "1.5") + "]")), "the size of 'a' is not a number");
    EXPECT_EQ(whyNot(text("[" + file("a", "1", "00") + "]")), "the SHA-256 of 'a' is not one");
    EXPECT_EQ(whyNot(text("[" + file("a", "1", std::string(64, 'A')) + "]")), "the SHA-256 of 'a' is not one");
    EXPECT_EQ(whyNot(text("[5]")), "its member 'name' is not a text");
}

TEST(Manifest, WithNamesThatAreNotSafeIsRefused) {
    EXPECT_EQ(whyNot(text("[" + file("../a") + "]")), "the name '../a' is not safe: it has the folder '..'");
    EXPECT_EQ(whyNot(text("[" + file("/etc/passwd") + "]")),
              "the name '/etc/passwd' is not safe: it has a folder without a name");
    EXPECT_EQ(whyNot(text("[" + file("a") + "," + file("A") + "]")), "the names 'a' and 'A' differ only in case");
    EXPECT_EQ(whyNot(text("[" + file("a") + "," + file("a") + "]")), "the names 'a' and 'a' are the same");
    EXPECT_EQ(whyNot(text("[" + file("manifest.json") + "]")),
              "the names 'manifest.json' and 'manifest.json' are the same");
    EXPECT_EQ(whyNot(text("[" + file("Manifest.json.SIG") + "]")),
              "the names 'manifest.json.sig' and 'Manifest.json.SIG' differ only in case");
    EXPECT_EQ(whyNot(text("[" + file(std::string(101, 'x')) + "]")),
              "the name '" + std::string(101, 'x') + "' is longer than 100 bytes");
    EXPECT_EQ(whyNot(text("[" + file("a", "8589934592") + "]")), "the file 'a' has 8 GiB or more");
    EXPECT_EQ(whyNot(text("[" + file("Manifest.json/a") + "]")), "the name 'manifest.json' is that of a folder, too");
    EXPECT_EQ(whyNot(text("[" + file("Sub/a") + "," + file("sUB") + "]")), "the name 'sUB' is that of a folder, too");
    EXPECT_EQ(
        whyNot(text("[" + file(R"(a\nkvreflash: all is well)") + "]")),
        R"(the name 'a\x0Akvreflash: all is well' is not safe: it has the character U+000A, which does not show as )"
        "what it is");
}

TEST(Manifest, NamesOfAnArchiveAreJudgedAtOnce) {
    EXPECT_THAT(faultsOfNames({{"a", 1, {}}, {"b/c", 2, {}}}), IsEmpty());
    EXPECT_THAT(faultsOfNames({{"NUL", 1, {}}, {"x", 1, {}}, {"X", 2, {}}}),
                ElementsAre("the name 'NUL' is not safe: Windows takes 'NUL' for a device",
                            "the names 'x' and 'X' differ only in case"));
    EXPECT_THAT(faultsOfNames({{"Größe/Ö.bin", 1, {}}, {"größe/ö.bin", 2, {}}, {"GRÖSSE", 3, {}}}),
                ElementsAre("the names 'Größe/Ö.bin' and 'größe/ö.bin' differ only in case"));
}

} // namespace
