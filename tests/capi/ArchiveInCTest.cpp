// Archives of the interface in C.

#include "ArchiveFolder.h"
#include "KvReleases.h"
#include "SessionInCTest.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

class ArchiveInC : public testing::Test {
protected:
    ArchiveInC() {
        files_.add(entry("a.bin").board("QB4120", 1).version("24.0"));
        files_.folder().write("a.bin", firmwareImage(KvCVersion("24.0"), 2));
        files_.write();
    }
    ~ArchiveInC() override { EXPECT_EQ(kvr_archive_free(archive_), KVR_SUCCESS); }
    ArchiveInC(const ArchiveInC&) = delete;
    ArchiveInC& operator=(const ArchiveInC&) = delete;

    void open(std::uint32_t flags = 0) {
        EXPECT_EQ(kvr_archive_free(archive_), KVR_SUCCESS);
        archive_ = opened(files_, flags);
    }
    [[nodiscard]] static kvr_archive* opened(const ArchiveFolder& files, std::uint32_t flags = 0) {
        const std::string folder = files.folder().text();
        auto options = sized<kvr_archive_options>();
        options.archive = folder.c_str();
        options.flags = flags;
        kvr_archive* archive = nullptr;
        EXPECT_EQ(kvr_archive_create(&options, &archive), KVR_SUCCESS) << kvr_last_error();
        return archive;
    }
    [[nodiscard]] kvr_archive_info info() const {
        auto record = sized<kvr_archive_info>();
        EXPECT_EQ(kvr_archive_get_info(archive_, &record), KVR_SUCCESS) << kvr_last_error();
        return record;
    }
    [[nodiscard]] std::string document(std::uint32_t kind) const {
        const char* text = nullptr;
        EXPECT_EQ(kvr_archive_get_document(archive_, kind, &text), KVR_SUCCESS) << kvr_last_error();
        return text != nullptr ? text : "";
    }

    [[nodiscard]] const ScratchFolder& folder() const { return files_.folder(); }
    [[nodiscard]] kvr_archive* archive() const { return archive_; }
    [[nodiscard]] std::wstring path() const { return files_.wideText(); }

private:
    ArchiveFolder files_;
    kvr_archive* archive_ = nullptr;
};

TEST_F(ArchiveInC, ContentIsKnownAfterReading) {
    open();
    auto none = sized<kvr_archive_info>();
    EXPECT_EQ(kvr_archive_get_info(archive(), &none), KVR_ERROR_ORDER);
    ASSERT_EQ(kvr_archive_read(archive()), KVR_SUCCESS);
    EXPECT_EQ(info().entries, 1U);
    EXPECT_STREQ(info().archive_version, "23.2.1");
    EXPECT_STREQ(info().message, "");
    auto entry = sized<kvr_entry>();
    ASSERT_EQ(kvr_archive_get_entry(archive(), 0, &entry), KVR_SUCCESS);
    EXPECT_STREQ(entry.file_name, "a.bin");
    EXPECT_STREQ(entry.version, "24.0");
    EXPECT_EQ(kvr_archive_get_entry(archive(), 1, &entry), KVR_ERROR_ARGUMENT);
    EXPECT_THAT(document(KVR_DOCUMENT_CONTENT), HasSubstr(R"("name": "kvreflash.content")"));
}

TEST_F(ArchiveInC, FindingsSayWhatIsWrong) {
    open();
    std::uint32_t count = 99;
    EXPECT_EQ(kvr_archive_check(archive(), &count), KVR_SUCCESS);
    EXPECT_EQ(count, 0U);
    static_cast<void>(folder().write("archive.json", "{"));
    EXPECT_EQ(kvr_archive_check(archive(), &count), KVR_FAILED);
    ASSERT_EQ(count, 1U);
    auto finding = sized<kvr_finding>();
    ASSERT_EQ(kvr_archive_get_finding(archive(), 0, &finding), KVR_SUCCESS);
    EXPECT_EQ(finding.severity, 0U);
    EXPECT_EQ(finding.line, 1U);
    EXPECT_STRNE(finding.message, "");
    EXPECT_THAT(document(KVR_DOCUMENT_CHECK), HasSubstr(finding.code));
    EXPECT_EQ(kvr_archive_read(archive()), KVR_FAILED);
    EXPECT_EQ(info().failure, static_cast<std::uint32_t>(KVR_FAILURE_ARCHIVE));
    EXPECT_STRNE(info().message, "");
}

TEST_F(ArchiveInC, ASealedArchiveIsWhatItsManifestSays) {
    using namespace KvNReflasher;
    static_cast<void>(folder().write("manifest.json", sealArchive({path(), L"archive.json", 0}).manifest));
    open(KVR_RELEASE);
    ASSERT_EQ(kvr_archive_read(archive()), KVR_SUCCESS);
    EXPECT_STREQ(kvr_code(KVR_CODE_SEAL, info().seal), "sealed");
    EXPECT_EQ(std::string(info().manifest_digest).size(), 64U);
    EXPECT_STREQ(info().created, "1970-01-01T00:00:00Z");
    static_cast<void>(folder().write("a.bin", "forged"));
    EXPECT_EQ(kvr_archive_read(archive()), KVR_FAILED);
    EXPECT_THAT(info().message, HasSubstr("'a.bin' has"));
}

TEST_F(ArchiveInC, ChangesAreThoseFromTheOlderArchive) {
    ArchiveFolder older;
    older.add(entry("a.bin").board("QB4120", 1).version("23.0"));
    older.write();
    kvr_archive* const before = opened(older);
    open();
    std::uint32_t places = 0;
    ASSERT_EQ(kvr_archive_compare(archive(), before, &places), KVR_SUCCESS);
    ASSERT_EQ(places, 1U);
    auto change = sized<kvr_change>();
    ASSERT_EQ(kvr_archive_get_change(archive(), 0, &change), KVR_SUCCESS);
    EXPECT_STREQ(kvr_code(KVR_CODE_CHANGE, change.change), "up");
    EXPECT_STREQ(change.version_before, "23.0");
    EXPECT_STREQ(change.version_after, "24.0");
    EXPECT_EQ(change.element_id, 1U);
    EXPECT_THAT(document(KVR_DOCUMENT_COMPARE), HasSubstr(R"("name": "kvreflash.compare")"));
    const char* text = nullptr;
    EXPECT_EQ(kvr_archive_get_document(archive(), 99, &text), KVR_ERROR_ARGUMENT);
    EXPECT_EQ(kvr_archive_get_change(before, 0, &change), KVR_ERROR_ORDER);
    older.folder().write("archive.json", "{");
    EXPECT_EQ(kvr_archive_compare(archive(), before, &places), KVR_FAILED);
    EXPECT_STRNE(kvr_last_error(), "");
    EXPECT_EQ(kvr_archive_free(before), KVR_SUCCESS);
    EXPECT_EQ(kvr_archive_compare(archive(), before, &places), KVR_ERROR_ARGUMENT);
}

} // namespace
