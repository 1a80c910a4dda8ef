// A client that was compiled before there was more than KvIReflasher: it must run with every library of this soname.
#include "FirstInterface.h"
#include "RackTest.h"

#include <gmock/gmock.h>

#include <array>
#include <memory>

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

class FirstClientTest : public RackTest {
protected:
    void SetUp() override {
        RackTest::SetUp();
        node = completeBoard("HCN", "QB4120", 0)
                   .element(completeElement(1, "UserFirmware").parameter("VERSION", "23.2.1").polls(1));
        archive.add(entry("a.bin").board("QB4120", 1).version("24.0"));
        boards = {completeBoard("IOMODULE", "IO", 0).element(completeElement(1, "Two").polls(1).finalState(3)),
                  completeBoard("IOMODULE", "IO", 1).element(completeElement(1, "Three").polls(1))};
        archive.add(entry("io.bin").board("IO", 1));
        serve();
    }
    void close() override { session_.reset(); }

    KvIReflasher& make(std::uint32_t mode) {
        KvTOptions options{};
        options.archiveFolder = archive.wideText();
        options.descriptionFileName = L"archive.json";
        options.target = L"127.0.0.1";
        options.mode = mode;
        session_.reset(KvIReflasher::createInstance(options));
        session_->setPhaseCallback(SessionLog::onPhase);
        session_->setElementErrorCallback(SessionLog::onElementError);
        session_->setProgressCallback(SessionLog::onProgress);
        session_->setMessageCallback(SessionLog::onMessage);
        return *session_;
    }

private:
    std::unique_ptr<KvIReflasher> session_;
};

template <typename Record>
std::vector<Record> copyOf(Record* records, std::uint32_t count) {
    const std::unique_ptr<Record[]> owner(records);
    return {records, records + count};
}

} // namespace

TEST_F(FirstClientTest, UpdatesATargetWithItsCallbacks) {
    KvIReflasher& session = make(performUpdate);
    ASSERT_EQ(0U, session.prepare());
    EXPECT_FALSE(session.run());
    EXPECT_THAT(log.text(), HasSubstr("Korvel Device Update Tool"));
    EXPECT_THAT(log.text(), EndsWith("\n    Update failed!\n"));
    EXPECT_THAT(log.notificationsOf("phase"), ElementsAre("phase 0", "phase 4294967295"));
    EXPECT_THAT(log.notificationsOf("elementError"), ElementsAre("elementError 1"));
    EXPECT_THAT(log.notificationsOf("progress"), Contains("progress 100"));
    EXPECT_EQ(3U, log.callsOf("update2").size());
}

TEST_F(FirstClientTest, AsksForTheArchiveAndTheElementsAndLeavesOneOut) {
    KvIReflasher& session = make(performUpdate);
    ASSERT_EQ(0U, session.prepare());
    std::array<std::wstring, 5> texts;
    session.getArchiveInfo(texts[0], texts[1], texts[2], texts[3], texts[4]);
    EXPECT_THAT(texts, ElementsAre(L"Archive", L"23.2.1", L"Product", L"1.0", L"Variant"));
    EXPECT_EQ(0U, session.reservedQuery());

    KvTArchiveFileInfo* files = nullptr;
    std::uint32_t count = 0;
    session.getArchiveFiles(files, count);
    const std::vector<KvTArchiveFileInfo> entries = copyOf(files, count);
    ASSERT_EQ(2U, entries.size());
    EXPECT_EQ("io.bin", entries[1].name);
    EXPECT_EQ("2.0", entries[1].version);

    session.disableUpdateElement(1);
    KvTUpdateElementInfo* records = nullptr;
    session.getUpdateElements(records, count);
    const std::vector<KvTUpdateElementInfo> elements = copyOf(records, count);
    ASSERT_EQ(3U, elements.size());
    EXPECT_EQ(L"QB4120, Firmware", elements[0].displayName);
    EXPECT_EQ(L"23.2.1", elements[0].installedVersion);
    EXPECT_EQ(L"24.0", elements[0].availableVersion);
    EXPECT_FALSE(elements[0].disabled);
    EXPECT_TRUE(elements[1].disabled);
    EXPECT_EQ(1U, elements[2].archiveFileIndex);
    EXPECT_EQ(2U, elements[2].index);
    EXPECT_TRUE(session.run());
    EXPECT_EQ(2U, log.callsOf("update2").size());
}

TEST_F(FirstClientTest, Reboots) {
    KvIReflasher& session = make(connectOnly);
    std::uint32_t status = 99;
    EXPECT_FALSE(session.getRebootSupportStatus(status));
    EXPECT_EQ(1U, status);
    ASSERT_EQ(0U, session.prepare());
    EXPECT_TRUE(session.getRebootSupportStatus(status));
    EXPECT_EQ(0U, status);
    EXPECT_TRUE(session.reboot());
    EXPECT_EQ(1U, log.callsOf("KvHIM_FORCE_resetDevice").size());
}

TEST_F(FirstClientTest, ReleasesTheTargetWithTheSession) {
    ASSERT_EQ(0U, make(showUpdatePlan).prepare());
    EXPECT_TRUE(log.callsOf("deleteRootHandle").empty());
    close();
    EXPECT_EQ(1U, log.callsOf("deleteRootHandle").size());
}
