#include "KvCVersion.h"
#include "MessageBytes.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <ostream>

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

const std::vector<std::string> lookup = {"KvHIM_createFilter",         "KvHIM_setFilterParameter 8",
                                         "KvHIM_setFilterParameter 9", "KvHIM_setFilterParameter 6",
                                         "KvHIM_applyFilter",          "KvHIM_getDeviceList -> status 21, errors 1",
                                         "KvHIM_getDeviceList",        "KvHIM_deleteFilter",
                                         "KvHIM_createDeviceHandle",   "KvHIM_deleteDeviceHandle"};

std::vector<std::string> scanCalls() {
    std::vector<std::string> calls = lookup;
    calls.insert(calls.end(), {"createRootHandleByIpAddressList 127.0.0.1", "scan"});
    return calls;
}

class SessionFlowTest : public SessionTest {
protected:
    std::vector<std::string> calls() { return log.events({Kind::call}); }
};

} // namespace

// What each mode does.

struct ModeCase {
    const char* name;
    std::uint32_t mode;
    bool hasBanner;
    bool readsArchive;
    bool scans;
    bool plans;
    /// What run prints; "VERSION" stands for the library's version.
    std::string printed;

    friend void PrintTo(const ModeCase& row, std::ostream* stream) { *stream << row.name; }
};

class ModeTest : public SessionFlowTest, public testing::WithParamInterface<ModeCase> {
protected:
    static void expectPlan(const KvTUpdateElementInfo& element, bool isPlanned) {
        EXPECT_EQ(element.hasArchiveFile, isPlanned ? 1U : 0U);
        EXPECT_EQ(element.archiveFileIndex, isPlanned ? 0U : 0xFFFFFFFFU);
        EXPECT_EQ(element.availableVersion, isPlanned ? L"2.0" : L"");
        EXPECT_EQ(element.checksumMismatch, isPlanned);
        EXPECT_EQ(element.phase, 0U);
    }
};

TEST_P(ModeTest, PreparesAndPrintsWhatItAsksFor) {
    addNodeElement(1, completeElement(1, "One").polls(1));
    const std::string expectedBanner = GetParam().hasBanner ? banner() : "";
    EXPECT_EQ(prepare(GetParam().mode), 0U);
    EXPECT_EQ(log.text(), expectedBanner);
    EXPECT_EQ(calls(), GetParam().scans ? scanCalls() : std::vector<std::string>());
    EXPECT_EQ(archiveFiles().size(), GetParam().readsArchive ? 1U : 0U);
    EXPECT_EQ(updateElements().size(), GetParam().scans ? 1U : 0U);
    for (const KvTUpdateElementInfo& element : updateElements()) {
        expectPlan(element, GetParam().plans);
    }
    log.clear();
    EXPECT_TRUE(run());
    std::string printed = GetParam().printed;
    if (const std::size_t place = printed.find("VERSION"); place != std::string::npos) {
        printed.replace(place, 7, libraryVersion());
    }
    EXPECT_THAT(log.text(), EndsWith(printed));
    if (GetParam().mode != performUpdate) {
        EXPECT_EQ(log.text(), printed);
        EXPECT_THAT(calls(), IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, ModeTest,
    testing::Values(ModeCase{"ShowVersion", 0, false, false, false, false, "VERSION\n"},
                    ModeCase{"ShowArchiveVersion", 1, false, true, false, false, "23.2.1\n"},
                    ModeCase{"ShowArchiveContent", 2, true, true, false, false,
                             "BoardType | File      | Version | Checksum | Id/TargetPath\n"
                             "----------------------------------------------------------\n"
                             "NODE      | node1.bin | 2.0     | 2        | 1            \n"},
                    ModeCase{"DumpArchiveDescription", 3, false, true, false, false,
                             "{\n"
                             "    \"info\": {\n"
                             "        \"formatVersion\": \"1.0\",\n"
                             "        \"archiveVersion\": \"23.2.1\",\n"
                             "        \"productName\": \"Product\",\n"
                             "        \"archiveVariant\": \"Variant\",\n"
                             "        \"archiveName\": \"Archive\"\n"
                             "    },\n"
                             "    \"files\": [\n"
                             "        {\n"
                             "            \"name\": \"node1.bin\",\n"
                             "            \"sequence\": 1,\n"
                             "            \"version\": \"2.0\",\n"
                             "            \"boardType\": \"NODE\",\n"
                             "            \"id\": 1,\n"
                             "            \"checksumCrc32\": 2\n"
                             "        }\n"
                             "    ]\n"
                             "}\n"},
                    ModeCase{"ShowTargetElements", 4, true, false, true, false,
                             "Update element | Version\n"
                             "------------------------\n"
                             "NODE, One      | 1.0    \n"},
                    ModeCase{"ConnectOnly", 5, true, false, true, false, ""},
                    ModeCase{"ShowUpdatePlan", 6, true, true, true, true,
                             "No. | Update element | Installed | Available | Checksums | Up-to-date | Phase\n"
                             "-----------------------------------------------------------------------------\n"
                             "0   | NODE, One      | 1.0       | 2.0       | 1 != 2    | N          | 0    \n"},
                    ModeCase{"PerformUpdate", 7, true, true, true, true,
                             "\nResults:\n\n    Update completed successfully!\n"},
                    ModeCase{"Unknown", 8, true, false, false, false, ""},
                    ModeCase{"LargestUnknown", 0xFFFFFFFF, true, false, false, false, ""}),
    [](const auto& row) { return row.param.name; });

TEST_F(SessionFlowTest, TheBannerIsOneMessage) {
    prepare(connectOnly);
    ASSERT_FALSE(log.messages().empty());
    const std::string text = banner();
    EXPECT_EQ(log.messages()[0], std::wstring(text.begin(), text.end()));
}

TEST_F(SessionFlowTest, TheLibrarysVersionIsAVersion) {
    EXPECT_NE(KvCVersion(libraryVersion().c_str()).getAsULong64(), 0U) << libraryVersion();
}

// Failures of prepare.

TEST_F(SessionFlowTest, AnUnreadableArchiveFailsWithItsOwnMessageFirst) {
    serve();
    std::filesystem::remove(archive.folder().path() / "archive.json");
    for (const std::uint32_t mode : {1U, 2U, 3U, 6U, 7U}) {
        SCOPED_TRACE(mode);
        const std::string expectedBanner = mode == 1 || mode == 3 ? "" : banner();
        options.mode = mode;
        EXPECT_EQ(session().prepare(), 1U);
        EXPECT_THAT(log.text(), StartsWith(expectedBanner + "ERROR: Cannot open archive description file "));
        EXPECT_THAT(log.text(), EndsWith("archive.json\nERROR: Failed to read firmware archive.\n"));
        EXPECT_THAT(calls(), IsEmpty());
        close();
        log.clear();
    }
}

TEST_F(SessionFlowTest, AnUpdateFileThatCannotBeReadFailsTheArchiveToo) {
    archive.addWithoutFile(entry("a.bin").board("NODE", 1).noChecksum());
    EXPECT_EQ(prepare(showArchiveVersion), 1U);
    EXPECT_THAT(log.text(), EndsWith("\nERROR: Failed to read firmware archive.\n"));
}

TEST_F(SessionFlowTest, AnUnreadableArchiveWinsOverAMissingTarget) {
    options.target.clear();
    options.descriptionFileName = L"none.json";
    EXPECT_EQ(prepare(showUpdatePlan), 1U);
    EXPECT_THAT(log.text(), EndsWith("ERROR: Failed to read firmware archive.\n"));
    EXPECT_THAT(log.text(), Not(HasSubstr("No IP address")));
}

TEST_F(SessionFlowTest, WithoutATargetEveryModeThatNeedsOneFails) {
    options.target.clear();
    for (const std::uint32_t mode : {4U, 5U, 6U, 7U}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(prepare(mode), 1U);
        EXPECT_EQ(log.text(), banner() + "ERROR: No IP address or hostname specified!\n");
        EXPECT_THAT(calls(), IsEmpty());
        close();
        log.clear();
    }
}

TEST_F(SessionFlowTest, ATargetIsNotLookedAtByModesThatNeedNone) {
    options.target.clear();
    for (const std::uint32_t mode : {0U, 1U, 2U, 3U, 8U}) {
        EXPECT_EQ(prepare(mode), 0U) << mode;
        close();
    }
}

TEST_F(SessionFlowTest, ATargetThatIsNoAddressIsInvalid) {
    options.target = L"127.0.0.256";
    EXPECT_EQ(prepare(connectOnly), 1U);
    EXPECT_EQ(log.text(), banner() + "ERROR: Invalid IP address or hostname (127.0.0.256)!\n");
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(SessionFlowTest, AnInvalidTargetIsShownInWideCharacters) {
    options.target = L"1.2\u00FC";
    EXPECT_EQ(prepare(connectOnly), 1U);
    EXPECT_THAT(log.text(), EndsWith("ERROR: Invalid IP address or hostname (1.2<U+00FC>)!\n"));
}

TEST_F(SessionFlowTest, ATargetThatIsNotFoundIsInaccessible) {
    target.address("127.0.0.2");
    EXPECT_EQ(prepare(connectOnly), 1U);
    EXPECT_EQ(log.text(), banner() + "ERROR: Device with IP address 127.0.0.1 not found (error code: -1)!\n"
                                     "ERROR: The target system is inaccessible!\n");
}

TEST_F(SessionFlowTest, AFailedLookupPrintsTheReportOfTheErrors) {
    addFault(fault("KvHIM_applyFilter").status(5).error(0x77, "The filter is broken."));
    EXPECT_EQ(prepare(connectOnly), 1U);
    EXPECT_EQ(log.text(), banner() + "ERROR: Device with IP address 127.0.0.1 not found (error code: 5)!\n"
                                     "ERROR: The target system is inaccessible!\n"
                                     "       ERROR 0x77 (reported by Host PC):\n"
                                     "         The filter is broken.\n");
}

TEST_F(SessionFlowTest, AnUnusableServiceIsToldBeforeTheTargetIsInaccessible) {
    target.serviceStatus(33);
    EXPECT_EQ(prepare(showUpdatePlan), 1U);
    EXPECT_EQ(log.text(), banner() + "\nERROR: Unable to communicate with the Korvel Hostlink!\n"
                                     "       Maybe the Korvel Setup was not properly installed or the service\n"
                                     "       has crashed.\n"
                                     "ERROR: The target system is inaccessible!\n");
    EXPECT_THAT(updateElements(), IsEmpty());
}

struct ScanCase {
    const char* name;
    FaultBuilder fault;
    std::vector<std::string> lastCalls;

    friend void PrintTo(const ScanCase& row, std::ostream* stream) { *stream << row.name; }
};

class ScanTest : public SessionFlowTest, public testing::WithParamInterface<ScanCase> {};

TEST_P(ScanTest, ThatFailsIsToldWithoutAReport) {
    addFault(GetParam().fault);
    EXPECT_EQ(prepare(connectOnly), 1U);
    EXPECT_EQ(log.text(), banner() + "ERROR: Cannot read target device information.\n"
                                     "\tPower-cycle the system and retry.\n"
                                     "\tIf the problem persists, contact Korvel support.\n");
    close();
    std::vector<std::string> expected = lookup;
    expected.insert(expected.end(), GetParam().lastCalls.begin(), GetParam().lastCalls.end());
    EXPECT_EQ(calls(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, ScanTest,
    testing::Values(
        ScanCase{"Open",
                 fault("createRootHandleByIpAddressList"),
                 {"createRootHandleByIpAddressList 127.0.0.1 -> status 1, errors 1"}},
        // Opening is judged by its result too: the scan is tried, here without a root handle.
        ScanCase{"OpenWithError",
                 fault("createRootHandleByIpAddressList").status(0),
                 {"createRootHandleByIpAddressList 127.0.0.1 -> status 0, errors 1", "scan -> status 1, errors 1"}},
        ScanCase{"Scan",
                 fault("scan"),
                 {"createRootHandleByIpAddressList 127.0.0.1", "scan -> status 1, errors 1", "deleteRootHandle"}},
        // These two are judged by their result.
        ScanCase{"ScanWithoutError",
                 fault("scan").noErrors(),
                 {"createRootHandleByIpAddressList 127.0.0.1", "scan -> status 1, errors 0", "deleteRootHandle"}},
        ScanCase{"ScanWithoutTree",
                 fault("scan").status(0).noErrors(),
                 {"createRootHandleByIpAddressList 127.0.0.1", "scan", "deleteRootHandle"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(SessionFlowTest, ReadingTheArchiveComesBeforeTheTarget) {
    target.address("127.0.0.2");
    archive.addWithoutFile(entry("a.bin").board("NODE", 1));
    EXPECT_EQ(prepare(showUpdatePlan), 1U);
    EXPECT_EQ(archiveFiles().size(), 1U);
}

TEST_F(SessionFlowTest, TheScanGetsTheAddressInItsDottedForm) {
    options.target = L"127.000.0.01";
    EXPECT_EQ(prepare(connectOnly), 0U);
    EXPECT_EQ(calls(), scanCalls());
}

// The support check.

struct SupportCase {
    const char* name;
    bool hasNode;
    bool hasCn;
    /// Whether an entry matches the element of the HCN, of the CN, and of the I/O board.
    bool hcnMatches;
    bool cnMatches;
    bool ioMatches;
    std::uint32_t mode;
    std::uint32_t status;

    friend void PrintTo(const SupportCase& row, std::ostream* stream) { *stream << row.name; }
};

class SupportTest : public SessionFlowTest, public testing::WithParamInterface<SupportCase> {
protected:
    void SetUp() override {
        SessionFlowTest::SetUp();
        const SupportCase& row = GetParam();
        if (row.hasNode) {
            target.add(completeBoard("HCN", "NODE", 0).element(completeElement(1)));
        }
        if (row.hasCn) {
            target.add(completeBoard("CN", "CNODE", 0).element(completeElement(1)));
        }
        target.add(completeBoard("IOMODULE", "IO", 0).element(completeElement(1)));
        addMatch("NODE", row.hcnMatches);
        addMatch("CNODE", row.cnMatches);
        addMatch("IO", row.ioMatches);
        hasNode = false;
        hasCn = false;
    }

private:
    void addMatch(const std::string& boardType, bool matches) {
        if (matches) {
            archive.add(entry(boardType + ".bin").board(boardType, 1));
        }
    }
};

TEST_P(SupportTest, AsksForAnEntryForEveryElementOfTheNodes) {
    EXPECT_EQ(prepare(GetParam().mode), GetParam().status);
    const std::string message = "ERROR: The target system is not supported by this firmware archive.\n";
    EXPECT_EQ(log.text(), banner() + (GetParam().status == 2 ? message : ""));
    for (const KvTUpdateElementInfo& element : updateElements()) {
        EXPECT_EQ(element.disabled, GetParam().status == 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, SupportTest,
                         testing::Values(SupportCase{"BothMatch", true, true, true, true, true, 7, 0},
                                         SupportCase{"IoModuleDoesNotMatch", true, true, true, true, false, 7, 0},
                                         SupportCase{"HcnDoesNotMatch", true, true, false, true, true, 7, 2},
                                         SupportCase{"CnDoesNotMatch", true, true, true, false, true, 7, 2},
                                         SupportCase{"NeitherMatches", true, true, false, false, false, 7, 2},
                                         SupportCase{"OnlyAnHcnThatDoesNotMatch", true, false, false, false, true, 7,
                                                     2},
                                         SupportCase{"OnlyAnHcnThatMatches", true, false, true, false, false, 7, 0},
                                         SupportCase{"OnlyACnThatDoesNotMatch", false, true, false, false, true, 7, 2},
                                         SupportCase{"NoNodes", false, false, false, false, false, 7, 0},
                                         SupportCase{"PlanIsShownAnyway", true, true, false, false, true, 6, 0}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SessionFlowTest, OneElementOfTheNodeWithoutAnEntryIsEnough) {
    addNodeElement(1, completeElement(1));
    addNodeElement(2, completeElement(2));
    node.element(completeElement(3));
    EXPECT_EQ(prepare(performUpdate), 2U);
}

TEST_F(SessionFlowTest, ACustomElementThatIsLeftOutNeedsAnEntryAllTheSame) {
    options.disableCustomElements = true;
    addNodeElement(1, completeElement(1));
    node.element(completeElement(2).parameter("CUSTOM", std::uint64_t(1)));
    EXPECT_EQ(prepare(performUpdate), 2U);
}

TEST_F(SessionFlowTest, FileSystemElementsOfTheNodeNeedNoEntry) {
    addNodeElement(1, completeElement(1));
    node.element(completeFile(2, "a.cfg"));
    EXPECT_EQ(prepare(performUpdate), 0U);
    EXPECT_EQ(updateElements().size(), 2U);
}

TEST_F(SessionFlowTest, ABoardBelowTheNodeIsNotTheNode) {
    addNodeElement(1, completeElement(1));
    node.add(completeBoard("IOMODULE", "IO", 0).element(completeElement(1)));
    EXPECT_EQ(prepare(performUpdate), 0U);
}

TEST_F(SessionFlowTest, NothingIsUpdatedOnATargetThatIsNotSupported) {
    node.element(completeElement(1));
    addBoard(1, completeElement(1));
    EXPECT_EQ(prepare(performUpdate), 2U);
    log.clear();
    EXPECT_TRUE(run());
    EXPECT_THAT(log.callsOf("update2"), IsEmpty());
    EXPECT_EQ(log.text(), "\nResults:\n\n    Update completed successfully!\n");
}

// Texts.

TEST_F(SessionFlowTest, ATargetPathThatIsNotAsciiStandsOnceInTheMessagesOfTheWriter) {
    addNodeElement(1, completeElement(1, "One"));
    addFile("a.cfg", "\xC3\xBC/\xE2\x82\xAC.cfg");
    options.verbose = true;
    EXPECT_TRUE(perform(performUpdate));
    const std::wstring path = L"/mnt/cn/cfdrive/" + inMessage("\xC3\xBC");
    const std::wstring indentation(12, L' ');
    EXPECT_THAT(log.messages(), testing::Contains(indentation + L"Directory " + path + L" created.\n"));
    EXPECT_THAT(log.messages(), testing::Contains(indentation + L"Successfully written " + path + L"/" +
                                                  inMessage("\xE2\x82\xAC") + L".cfg.\n"));
}
