#include "QueryDocument.h"

#include "KvNJson.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

using KvNJson::json;
using KvNJson::jsonView;
using KvNReflasher::KvTArchiveFileInfo;
using KvNReflasher::KvTMessageCallback;
using KvNReflasher::KvTNumberCallback;
using KvNReflasher::KvTUpdateElementInfo;
using KvNReflasher::showArchiveContent;
using KvNReflasher::showTargetElements;
using KvNReflasher::showUpdatePlan;

/// A session that has found what it is told.
class FoundRecords : public KvIReflasher {
public:
    std::vector<KvTUpdateElementInfo> elements;
    std::vector<KvTArchiveFileInfo> files;
    int infoQueries = 0;

    void setPhaseCallback(KvTNumberCallback) override {}
    void setElementErrorCallback(KvTNumberCallback) override {}
    void setProgressCallback(KvTNumberCallback) override {}
    void setMessageCallback(KvTMessageCallback) override {}
    std::uint32_t prepare() override { return 0; }
    bool run() override { return true; }
    void getArchiveInfo(std::wstring& archiveName, std::wstring& archiveVersion, std::wstring& productName,
                        std::wstring& formatVersion, std::wstring& archiveVariant) override {
        ++infoQueries;
        archiveName = L"Name \"q\"";
        archiveVersion = L"23.2.1";
        productName = L"Gr\u00FCn";
        formatVersion = L"1.0";
        archiveVariant = L"";
    }
    std::uint32_t reservedQuery() override { return 0; }
    void getUpdateElements(KvTUpdateElementInfo*& found, std::uint32_t& count) override {
        count = static_cast<std::uint32_t>(elements.size());
        found = elements.empty() ? nullptr : new KvTUpdateElementInfo[elements.size()];
        std::copy(elements.begin(), elements.end(), found);
    }
    void disableUpdateElement(std::uint32_t) override {}
    void getArchiveFiles(KvTArchiveFileInfo*& found, std::uint32_t& count) override {
        count = static_cast<std::uint32_t>(files.size());
        found = files.empty() ? nullptr : new KvTArchiveFileInfo[files.size()];
        std::copy(files.begin(), files.end(), found);
    }
    bool getRebootSupportStatus(std::uint32_t&) override { return false; }
    bool reboot() override { return false; }
};

/// Every field has a value of its own.
KvTUpdateElementInfo distinctElement() {
    KvTUpdateElementInfo element{};
    element.index = 1;
    element.boardType = L"type";
    element.serialNumber = 4294967295U;
    element.boardName = L"board \u20AC";
    element.unitPath = L"unit: rack / instance";
    element.slot = 4;
    element.slotCount = 5;
    element.displayName = L"display\n";
    element.typeName = L"Firmware";
    element.isFileSystemElement = true;
    element.installedVersion = L"1.0";
    element.custom = 1;
    element.phase = 6;
    element.archiveFileIndex = 4294967295U;
    element.availableVersion = L"2.0";
    element.disabled = true;
    return element;
}

std::vector<std::string> keysOf(const jsonView& object) {
    std::vector<std::string> keys;
    for (std::size_t index = 0; index < object.size(); ++index) {
        keys.emplace_back(object.key(index));
    }
    return keys;
}

using Keys = std::vector<std::string>;

TEST(QueryDocument, EachModeHasItsParts) {
    FoundRecords session;
    EXPECT_EQ(keysOf(json::parse(queryDocument(session, showArchiveContent)).view()), (Keys{"archive", "files"}));
    EXPECT_EQ(keysOf(json::parse(queryDocument(session, showTargetElements)).view()), (Keys{"elements"}));
    EXPECT_EQ(keysOf(json::parse(queryDocument(session, showUpdatePlan)).view()),
              (Keys{"archive", "files", "elements"}));
}

TEST(QueryDocument, WithoutRecordsTheListsAreEmpty) {
    FoundRecords session;
    EXPECT_EQ(queryDocument(session, showTargetElements), "{\n    \"elements\": []\n}\n");
    EXPECT_EQ(queryDocument(session, showArchiveContent), "{\n"
                                                          "    \"archive\": {\n"
                                                          "        \"archiveName\": \"Name \\\"q\\\"\",\n"
                                                          "        \"archiveVersion\": \"23.2.1\",\n"
                                                          "        \"productName\": \"Gr\xC3\xBCn\",\n"
                                                          "        \"formatVersion\": \"1.0\",\n"
                                                          "        \"archiveVariant\": \"\"\n"
                                                          "    },\n"
                                                          "    \"files\": []\n"
                                                          "}\n");
}

TEST(QueryDocument, AnElementHasAllItsFields) {
    FoundRecords session;
    session.elements = {distinctElement()};
    EXPECT_EQ(queryDocument(session, showTargetElements), "{\n"
                                                          "    \"elements\": [\n"
                                                          "        {\n"
                                                          "            \"index\": 1,\n"
                                                          "            \"boardType\": \"type\",\n"
                                                          "            \"serialNumber\": 4294967295,\n"
                                                          "            \"boardName\": \"board \xE2\x82\xAC\",\n"
                                                          "            \"unitPath\": \"unit: rack / instance\",\n"
                                                          "            \"slot\": 4,\n"
                                                          "            \"slotCount\": 5,\n"
                                                          "            \"displayName\": \"display\\n\",\n"
                                                          "            \"typeName\": \"Firmware\",\n"
                                                          "            \"isFileSystemElement\": true,\n"
                                                          "            \"valid\": false,\n"
                                                          "            \"active\": false,\n"
                                                          "            \"installedVersion\": \"1.0\",\n"
                                                          "            \"custom\": 1,\n"
                                                          "            \"phase\": 6,\n"
                                                          "            \"hasArchiveFile\": 0,\n"
                                                          "            \"archiveFileIndex\": 4294967295,\n"
                                                          "            \"availableVersion\": \"2.0\",\n"
                                                          "            \"checksumMismatch\": false,\n"
                                                          "            \"disabled\": true\n"
                                                          "        }\n"
                                                          "    ]\n"
                                                          "}\n");
}

TEST(QueryDocument, EachFlagStandsForItself) {
    FoundRecords session;
    session.elements.resize(6);
    session.elements[0].isFileSystemElement = true;
    session.elements[1].valid = true;
    session.elements[2].active = true;
    session.elements[3].checksumMismatch = true;
    session.elements[4].disabled = true;
    session.elements[5].hasArchiveFile = 1;
    const json document = json::parse(queryDocument(session, showTargetElements));
    const jsonView elements = document.view().find("elements");
    const Keys flags{"isFileSystemElement", "valid", "active", "checksumMismatch", "disabled"};
    for (std::size_t index = 0; index < elements.size(); ++index) {
        for (std::size_t flag = 0; flag < flags.size(); ++flag) {
            EXPECT_EQ(elements.at(index).find(flags[flag]).get_boolean(), index == flag) << flags[flag];
        }
        EXPECT_EQ(elements.at(index).find("hasArchiveFile").get_unsigned(), index == 5 ? 1U : 0U);
    }
}

TEST(QueryDocument, RecordsKeepTheirOrder) {
    FoundRecords session;
    session.files = {{"b.bin", "2.0"}, {"a \xC3\xBC", "23.2a12"}, {"", ""}};
    session.elements.resize(3);
    for (std::uint32_t index = 0; index < 3; ++index) {
        session.elements[index].index = index;
    }
    const json document = json::parse(queryDocument(session, showUpdatePlan));
    const jsonView files = document.view().find("files");
    ASSERT_EQ(files.size(), session.files.size());
    for (std::size_t index = 0; index < files.size(); ++index) {
        EXPECT_EQ(keysOf(files.at(index)), (Keys{"name", "version"}));
        EXPECT_EQ(files.at(index).find("name").get_string(), session.files[index].name);
        EXPECT_EQ(files.at(index).find("version").get_string(), session.files[index].version);
    }
    const jsonView elements = document.view().find("elements");
    ASSERT_EQ(elements.size(), 3U);
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(elements.at(index).find("index").get_unsigned(), index);
    }
}

TEST(QueryDocument, OnlyWhatIsShownIsAskedFor) {
    FoundRecords session;
    static_cast<void>(queryDocument(session, showTargetElements));
    EXPECT_EQ(session.infoQueries, 0);
    static_cast<void>(queryDocument(session, showUpdatePlan));
    EXPECT_EQ(session.infoQueries, 1);
}

} // namespace
