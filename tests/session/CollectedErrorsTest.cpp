#include "KvCErrorManager.h"
#include "SessionTest.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ostream>
#include <string>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using namespace KvNReflasher;

namespace {

void collectError(const std::string& text) {
    KvTErrorEntry error;
    error.code = 0x42;
    error.text = text;
    KvCErrorManager::getInstance()->getMasterErrorList().addError(error);
}

} // namespace

/// Errors that a session collects in the master list.
using CollectedErrorsTest = SessionTest;

struct UnreportedCase {
    const char* name;
    const wchar_t* descriptionFileName;
    const wchar_t* target;
    std::uint32_t status;
    std::string message;

    friend void PrintTo(const UnreportedCase& row, std::ostream* stream) { *stream << row.name; }
};

class UnreportedTest : public CollectedErrorsTest, public testing::WithParamInterface<UnreportedCase> {};

TEST_P(UnreportedTest, ErrorsAreNotReportedByThisFailureOfPrepare) {
    node.element(updateElement(1)); // a scan collects an error, as VERSION_HISTORY is missing
    options.descriptionFileName = GetParam().descriptionFileName;
    options.target = GetParam().target;
    collectError("From before.");
    EXPECT_EQ(prepare(performUpdate), GetParam().status);
    EXPECT_GT(KvCErrorManager::getInstance()->getMasterErrorList().getErrorCount(), 0U);
    EXPECT_THAT(log.text(), EndsWith(GetParam().message));
    EXPECT_THAT(log.text(), Not(HasSubstr("reported by")));
}

INSTANTIATE_TEST_SUITE_P(Failures, UnreportedTest,
                         testing::Values(UnreportedCase{"UnreadableArchive", L"none.json", L"127.0.0.1", 1,
                                                        "ERROR: Failed to read firmware archive.\n"},
                                         UnreportedCase{"NoTarget", L"archive.json", L"", 1,
                                                        "ERROR: No IP address or hostname specified!\n"},
                                         UnreportedCase{"InvalidTarget", L"archive.json", L"127.0.0.256", 1,
                                                        "ERROR: Invalid IP address or hostname (127.0.0.256)!\n"},
                                         UnreportedCase{
                                             "TargetNotSupported", L"archive.json", L"127.0.0.1", 2,
                                             "ERROR: The target system is not supported by this firmware archive.\n"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(CollectedErrorsTest, ErrorsCollectedByPrepareFailTheRunOfEveryMode) {
    for (std::uint32_t mode = 0; mode <= 8; ++mode) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(prepare(mode), 0U);
        log.clear();
        EXPECT_TRUE(run());
        const std::string undisturbed = log.text();
        close();
        EXPECT_EQ(prepare(mode), 0U);
        collectError("From before.");
        log.clear();
        EXPECT_FALSE(run());
        EXPECT_EQ(log.text(), undisturbed + reportedErrors("       ERROR 0x42 (reported by Host PC):\n"
                                                           "         From before.\n"));
        close();
        KvCErrorManager::getInstance()->getMasterErrorList().reset();
        log.clear();
    }
}

TEST_F(CollectedErrorsTest, AParameterThatTheScanCannotReadFailsTheRun) {
    node.element(updateElement(1)); // without VERSION_HISTORY
    EXPECT_EQ(prepare(connectOnly), 0U);
    EXPECT_EQ(log.text(), banner());
    log.clear();
    EXPECT_FALSE(run());
    EXPECT_THAT(log.text(), StartsWith("\nReported errors:\n       ERROR 0x2001 (reported by Host PC):\n"));
}

TEST_F(CollectedErrorsTest, ErrorsStayForALaterRun) {
    addNodeElement(1, completeElement(1));
    addFault(fault("deleteRemoteFile"));
    const std::string end = "\n    Update completed successfully!\n" + reportedErrors(faultReport("deleteRemoteFile"));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(log.text(), EndsWith(end));
    log.clear();
    EXPECT_FALSE(run());
    EXPECT_THAT(log.text(), EndsWith(end));
}

TEST_F(CollectedErrorsTest, AFailedUnlockFailsTheRunOfASuccessfulUpdate) {
    addFault(fault("unlock"));
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(log.text(), EndsWith("\n    Update completed successfully!\n" + reportedErrors(faultReport("unlock"))));
}

TEST_F(CollectedErrorsTest, AFailedLockIsReported) {
    addNodeElement(1, completeElement(1));
    addFault(fault("lock"));
    EXPECT_EQ(prepare(performUpdate), 0U);
    log.clear();
    EXPECT_FALSE(run());
    EXPECT_EQ(log.text(), reportedErrors(faultReport("lock")));
}

TEST_F(CollectedErrorsTest, AnUpdateThatFailsWithoutErrorsReportsNone) {
    addNodeElement(1, completeElement(1));
    archive.removeFile("node1.bin");
    EXPECT_FALSE(perform(performUpdate));
    EXPECT_THAT(log.text(), EndsWith("\n    Update incomplete due to missing files in the source folder!\n"));
}

TEST_F(CollectedErrorsTest, ErrorsOfElementsStandUnderResultsAndAgainUnderReportedErrors) {
    addNodeElement(1, completeElement(1, "One").reports(0x10, "Worn out."));
    addFault(fault("deleteRemoteFile"));
    EXPECT_FALSE(perform(performUpdate));
    const std::string report = "       ERROR 0x10 (reported by Host PC):\n         Worn out.\n";
    EXPECT_THAT(log.text(), EndsWith("\nResults:\n    ERROR: NODE, One:\n" + report + "\n    Update failed!\n" +
                                     reportedErrors(faultReport("deleteRemoteFile") + report)));
}
