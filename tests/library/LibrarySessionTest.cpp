#include "KvCErrorManager.h"
#include "KvCVersion.h"
#include "SessionTest.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

using testing::IsEmpty;
using namespace KvNReflasher;
using Kind = SessionLog::Kind;

namespace {

class LibrarySessionTest : public SessionTest {
protected:
    void addRack() {
        addNodeElement(1, completeElement(1, "One").polls(2), 1);
        addBoard(1, completeElement(1, "Two").polls(1), 2);
        addFile("a.cfg", "cfg/a.cfg", 2);
    }
    /// What `operation` writes to standard output.
    template <typename Operation>
    static std::string captured(Operation&& operation) {
        testing::internal::CaptureStdout();
        operation();
        return testing::internal::GetCapturedStdout();
    }
};

std::string updateLine(const std::string& displayName) {
    return "        " + displayName + std::string(56 - 8 - displayName.size(), ' ') + "\n";
}

std::string transferLine(const std::string& name) {
    return "        " + name + std::string(46 - name.size() + 2, ' ') + "[OK]\n";
}

/// A progress line with a "*" for the spinner; the percentage is three columns wide.
std::string progressLine(const std::string& percentage) {
    return percentage + "% *" + std::string(50, ' ') + "\r";
}

const std::string completeLine = "100% " + std::string(51, ' ') + "[OK]\n";

/// `text` with a "*" for each spinner.
std::string withoutSpinner(std::string text) {
    for (std::size_t end = text.find('\r'); end != std::string::npos; end = text.find('\r', end + 1)) {
        text[end - 51] = '*';
    }
    return text;
}

} // namespace

TEST_F(LibrarySessionTest, TheVersionIsThatOfTheLibraryAndNotOfTheProgram) {
    EXPECT_EQ(KvCVersion(libraryVersion().c_str()), KvCVersion(KV_LIBRARY_VERSION));
}

TEST_F(LibrarySessionTest, WithoutAnyCallbackAnUpdateIsToldOnStandardOutputOnly) {
    addRack();
    serve();
    options.mode = performUpdate;
    const std::unique_ptr<KvIReflasher> silent(KvIReflasher::createInstance(options));
    const std::string text = captured([&] {
        EXPECT_EQ(silent->prepare(), 0U);
        EXPECT_TRUE(silent->run());
    });
    EXPECT_EQ(withoutSpinner(text),
              banner() + "\n\nTransferring files:\n" + transferLine("node1.bin") + "\nUpdating:\n" +
                  updateLine("NODE, One") + progressLine(" 50") + progressLine("100") + progressLine("100") +
                  completeLine + "\n\nTransferring files:\n" + transferLine("io1.bin") + "\nUpdating:\n" +
                  updateLine("IO1, Two") + updateLine("NODE, Updatable file (a.cfg)") + progressLine("100") +
                  progressLine("100") + completeLine + "\nResults:\n\n    Update completed successfully!\n");
    EXPECT_THAT(log.events({Kind::notification, Kind::message}), IsEmpty());
}

TEST_F(LibrarySessionTest, WhatTheMessageCallbackReceivesIsWhatStandardOutputWouldShow) {
    addNodeElement(1, completeElement(1, "One").reports(0x17, "Worn out."));
    options.verbose = true;
    options.noProgress = true;
    EXPECT_EQ(captured([&] { EXPECT_FALSE(perform(performUpdate)); }), "");
    const std::string received = log.text();
    log.clear();
    close();
    KvCErrorManager::getInstance()->getMasterErrorList().reset();
    options.mode = performUpdate;
    const std::unique_ptr<KvIReflasher> silent(KvIReflasher::createInstance(options));
    EXPECT_EQ(captured([&] {
                  EXPECT_EQ(silent->prepare(), 0U);
                  EXPECT_FALSE(silent->run());
              }),
              received);
}

TEST_F(LibrarySessionTest, WithoutItsMessageCallbackASessionGoesBackToStandardOutput) {
    EXPECT_EQ(prepare(connectOnly), 0U);
    session().setMessageCallback(nullptr);
    std::uint32_t status = 0;
    EXPECT_THAT(captured([&] { EXPECT_FALSE(session().getRebootSupportStatus(status)); }),
                testing::StartsWith("ERROR: Device cannot be rebooted automatically"));
}

TEST_F(LibrarySessionTest, ArraysOutliveTheSessionThatMadeThem) {
    addNodeElement(1, completeElement(1, std::string(100, 'a')));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    KvTUpdateElementInfo* elements = nullptr;
    KvTArchiveFileInfo* files = nullptr;
    std::uint32_t elementCount = 0;
    std::uint32_t fileCount = 0;
    session().getUpdateElements(elements, elementCount);
    session().getArchiveFiles(files, fileCount);
    close();
    ASSERT_EQ(elementCount, 1U);
    EXPECT_EQ(elements[0].typeName, std::wstring(100, L'a'));
    ASSERT_EQ(fileCount, 1U);
    EXPECT_EQ(files[0].name, "node1.bin");
    elements[0].typeName += std::wstring(1000, L'b');
    files[0].name += std::string(1000, 'b');
    delete[] elements;
    delete[] files;
}

TEST_F(LibrarySessionTest, ASecondSessionFindsWhatTheFirstInstalled) {
    addNodeElement(1, completeElement(1, "One"));
    archive.folder().write("node1.bin", firmwareImage(KvCVersion("2.0"), 2));
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    EXPECT_EQ(updateElements()[0].installedVersion, L"1.0");
    EXPECT_FALSE(updateElements()[0].disabled);
    close();
    EXPECT_TRUE(perform(performUpdate));
    close();
    EXPECT_EQ(prepare(showUpdatePlan), 0U);
    EXPECT_EQ(updateElements()[0].installedVersion, L"2.0");
    EXPECT_TRUE(updateElements()[0].disabled);
}

TEST_F(LibrarySessionTest, TwoSessionsExistSideBySide) {
    addNodeElement(1, completeElement(1));
    EXPECT_EQ(prepare(performUpdate), 0U);
    const std::unique_ptr<KvIReflasher> other(KvIReflasher::createInstance(options));
    other->setMessageCallback(SessionLog::onMessage);
    EXPECT_EQ(other->prepare(), 0U);
    EXPECT_TRUE(run());
    EXPECT_TRUE(other->run());
}
