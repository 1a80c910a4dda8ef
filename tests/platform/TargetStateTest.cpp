// What a target keeps in its folder, and several processes that use one folder.

#include "ChildProcess.h"
#include "TargetFixtures.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using namespace KvNInventoryIDs;

TEST_F(TargetState, ReadingWritesNothing) {
    serveElement(updateElement(1));
    EXPECT_EQ(countDevices(), 1);
    EXPECT_EQ(scanElement(element).version, "1.0");
    openDevice();
    EXPECT_THAT(target.folder().list(), ElementsAre("target.json"));
}

TEST_F(TargetState, LastsWhenTheTargetIsServedAgain) {
    serveElement(updateElement(1));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    serveAnew();
    EXPECT_EQ(scanElement(element).version, "2.0");
    EXPECT_EQ(scanElement(element).checksum, 22U);
    EXPECT_THAT(target.folder().list(), Contains(elementFile));
}

TEST_F(TargetState, NeverChangesTheDescription) {
    serveElement(updateElement(1));
    const std::string before = target.folder().read("target.json");
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    resetDevice();
    EXPECT_EQ(target.folder().read("target.json"), before);
}

TEST_F(TargetState, IsResetByDeletingItsFolder) {
    serveElement(updateElement(1));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    fs::remove_all(target.folder().path() / "state");
    EXPECT_EQ(scanElement(element).version, "1.0");
    updateOnce(1, firmwareImage(KvCVersion("3.0"), 33));
    EXPECT_EQ(scanElement(element).version, "3.0");
}

TEST_F(TargetState, HasAFileForEachChangedElementOnly) {
    ItemBuilder node = item("HCN");
    for (std::uint32_t id = 1; id <= 50; ++id) {
        node.element(updateElement(id).polls(1));
    }
    target.add(node).serve();
    updateOnce(7, "a");
    updateOnce(9, "b");
    updateOnce(7, "c");
    std::vector<std::string> names;
    for (const std::string& name : target.folder().list()) {
        if (name.rfind("state/elements/", 0) == 0) {
            names.push_back(name);
        }
    }
    EXPECT_THAT(names, ElementsAre("state/elements/HCN.1-UPDATE_INFO.1-UPDATE_ELEMENT.7.json",
                                   "state/elements/HCN.1-UPDATE_INFO.1-UPDATE_ELEMENT.9.json"));
}

TEST_F(TargetState, OfADeepElementHasAFileOfABoundedName) {
    ItemBuilder node = item("PIGGYBACK_MODULE").element(updateElement(1));
    KvCInventoryAddress address = PIGGYBACK_MODULE;
    for (int depth = 0; depth < 100; ++depth) {
        node = item("SUB_BOARDS").add(node);
        address = SUB_BOARDS / address;
    }
    target.add(node).serve();
    openRoot();
    boardAddress = address;
    lock();
    EXPECT_EQ(update(1, firmwareImage(KvCVersion("2.0"), 22)), 2U);
    unlock();
    closeRoot();
    serveAnew();
    EXPECT_EQ(scanElement(address / UPDATE_INFO / UPDATE_ELEMENT).checksum, 22U);
    for (const auto& file : fs::directory_iterator(target.folder().path() / "state" / "elements")) {
        EXPECT_LE(file.path().filename().string().size(), 110U);
    }
}

TEST_F(TargetState, OfAnotherProcessShowsInTheNextScan) {
    serveElement(updateElement(1).polls(1));
    ChildProcess other(KV_OTHER_CLIENT, {target.folder().text()});
    const std::string image = files.write("image", firmwareImage(KvCVersion("2.0"), 22));
    EXPECT_EQ(other.ask("lock"), "0");
    EXPECT_EQ(other.ask("transfer " + image), "0");
    EXPECT_EQ(other.ask("start 1"), "0");
    EXPECT_EQ(scanElement(element).version, "1.0");
    EXPECT_EQ(other.ask("query 1"), "2");
    EXPECT_EQ(scanElement(element).version, "2.0");
    EXPECT_EQ(other.finish(), 0);
}

TEST_F(TargetState, AResetOfAnotherProcessActivates) {
    serveElement(updateElement(1).activatedAtReboot());
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    ChildProcess other(KV_OTHER_CLIENT, {target.folder().text()});
    EXPECT_EQ(scanElement(element).version, "1.0");
    EXPECT_EQ(other.ask("reset"), "0");
    EXPECT_EQ(scanElement(element).version, "2.0");
}

TEST_F(TargetState, DeviceListSessionsAfterAResetAreCountedAcrossProcesses) {
    target.rebootLookups(3);
    serveElement(updateElement(1));
    ChildProcess other(KV_OTHER_CLIENT, {target.folder().text()});
    EXPECT_EQ(other.ask("devices"), "1");
    EXPECT_EQ(other.ask("reset"), "0");
    EXPECT_EQ(countDevices(), 0);
    EXPECT_EQ(other.ask("devices"), "0");
    serveAnew();
    EXPECT_EQ(countDevices(), 0);
    EXPECT_EQ(other.ask("devices"), "1");
    EXPECT_EQ(countDevices(), 1);
}

TEST_F(TargetState, ManyProcessesCountTogether) {
    target.rebootLookups(40);
    serveElement(updateElement(1));
    resetDevice();
    ChildProcess first(KV_OTHER_CLIENT, {target.folder().text()});
    ChildProcess second(KV_OTHER_CLIENT, {target.folder().text()});
    for (int session = 0; session < 20; ++session) {
        EXPECT_EQ(first.ask("devices"), "0");
        EXPECT_EQ(second.ask("devices"), "0");
    }
    EXPECT_EQ(first.ask("devices"), "1");
    EXPECT_EQ(second.ask("devices"), "1");
}

TEST_F(TargetState, TheLockHoldsBetweenProcesses) {
    serveElement(updateElement(1));
    ChildProcess other(KV_OTHER_CLIENT, {target.folder().text()});
    EXPECT_EQ(other.ask("lock"), "0");
    openRoot();
    EXPECT_NE(tryLock(), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre("The target is locked by another owner."));
    EXPECT_EQ(other.ask("unlock"), "0");
    lock();
    EXPECT_EQ(other.ask("lock"), "1");
}

TEST_F(TargetState, EverythingUnderTheLockEndsWithAKilledOwner) {
    serveElement(updateElement(1).polls(2));
    const std::string image = files.write("image", firmwareImage(KvCVersion("2.0"), 22));
    ChildProcess owner(KV_OTHER_CLIENT, {target.folder().text()});
    EXPECT_EQ(owner.ask("lock"), "0");
    EXPECT_EQ(owner.ask("transfer " + image), "0");
    EXPECT_EQ(owner.ask("start 1"), "0");
    EXPECT_EQ(owner.ask("query 1"), "1");
    owner.kill();
    const fs::path transferred = target.folder().path() / "state" / "transferred";
    EXPECT_FALSE(fs::is_empty(transferred)) << "nobody could clear it";
    openRoot();
    lock();
    EXPECT_FALSE(fs::exists(transferred));
    Status status;
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::wrongUpdateState));
    EXPECT_EQ(scanElement(element).version, "1.0");
    EXPECT_EQ(update(1, "a"), 2U);
}

TEST_F(TargetState, TheLockEndsWithTheProcess) {
    serveElement(updateElement(1));
    ChildProcess owner(KV_OTHER_CLIENT, {target.folder().text()});
    EXPECT_EQ(owner.ask("lock"), "0");
    EXPECT_EQ(owner.finish(), 0);
    openRoot();
    lock();
}

TEST_F(TargetState, WhatOthersPutIntoTheFolderIsIgnoredWithAWarning) {
    serveElement(updateElement(1));
    updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
    const std::string good = target.folder().read(elementFile);
    const ScratchFolder& folder = target.folder();
    folder.write("state/elements/broken.json", "{");
    folder.write("state/elements/empty.json", "");
    folder.write("state/elements/notes.txt", "hello");
    folder.write("state/elements/copy.json", good);
    folder.write("state/elements/HCN.1-UPDATE_INFO.1-UPDATE_ELEMENT.1.json.tmp", "half");
    folder.write("state/elements/CN.1.json", R"({"address": "CN[1]", "installed": {"VERSION": "9.0"}})");
    folder.write("state/resets.json", "[]");
    folder.write("state/README", "hello");
    fs::create_directory(folder.path() / "state" / "elements" / "folder");
    KvEmulation::reset();
    const auto warnings = target.serveAgain().warnings;
    EXPECT_THAT(warnings, SizeIs(7));
    for (const char* const name : {"broken.json", "empty.json", "notes.txt", "copy.json", "CN[1]", "resets.json"}) {
        EXPECT_THAT(warnings, Contains(HasSubstr(name)));
    }
    EXPECT_THAT(warnings, Contains(HasSubstr((fs::path("elements") / "folder").string())));
    EXPECT_EQ(scanElement(element).version, "2.0");
    EXPECT_EQ(countDevices(), 1);
    resetDevice();
}

TEST_F(TargetState, ADamagedFileOfAnElementCountsAsAbsentAndIsReplaced) {
    serveElement(updateElement(1));
    for (const char* const damage :
         {"", "{}", "[]", R"({"address": "CN[1]"})",
          R"({"address": "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]", "x": 1})",
          R"({"address": "HCN[1]/UPDATE_INFO[1]/UPDATE_ELEMENT[1]", "installed": {"CHECKSUM_CRC32": "x"}})",
          R"({"address": 1})"}) {
        target.folder().write(elementFile, damage);
        EXPECT_EQ(scanElement(element).version, "1.0") << damage;
        updateOnce(1, firmwareImage(KvCVersion("2.0"), 22));
        EXPECT_EQ(scanElement(element).version, "2.0") << damage;
    }
}

// A file that cannot be read now may be readable again, and is not to be replaced by one that begins anew.
TEST_F(TargetState, AFileOfAnElementThatCannotBeReadFailsAnInstallation) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    fs::create_directories(target.folder().path() / elementFile);
    Status status;
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre(StartsWith("Cannot read \"")));
    fs::remove(target.folder().path() / elementFile);
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
}

TEST_F(TargetState, CountersThatCannotBeReadFailAResetAndAnInstallation) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    const fs::path counters = target.folder().path() / "state" / "resets.json";
    fs::create_directories(counters);
    Status status;
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_NE(KvHIM_FORCE_resetDevice(errors(), openDevice(), 0), 0);
    EXPECT_THAT(takeErrorTexts(), ElementsAre(StartsWith("Cannot read \""), StartsWith("Cannot read \"")));
    closeDevice();
    EXPECT_EQ(countDevices(), 1);
    fs::remove(counters);
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
    resetDevice();
}

TEST_F(TargetState, AHugeFileAmongTheStateIsNotRead) {
    serveElement(updateElement(1));
    target.folder().write(elementFile, std::string(2000000, ' '));
    KvEmulation::reset();
    EXPECT_THAT(target.serveAgain().warnings, SizeIs(1));
    EXPECT_EQ(scanElement(element).version, "1.0");
}

TEST_F(TargetState, AStateThatIsAFileIsAClearError) {
    serveElement(updateElement(1));
    target.folder().write("state", "hello");
    openRoot();
    EXPECT_NE(tryLock(), 0U);
    EXPECT_THAT(takeErrorTexts(), ElementsAre(StartsWith("Cannot create the folder \"")));
    EXPECT_EQ(scanElement(element).version, "1.0");
}

TEST_F(TargetState, AnInstallationThatCannotBeWrittenFailsTheQueryAndCanBeTriedAgain) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    target.folder().write("state/elements", "in the way");
    Status status{7, 8, 9};
    EXPECT_NE(tryQuery(1, status), 0U);
    EXPECT_EQ(status, (Status{7, 8, 9}));
    EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    fs::remove(target.folder().path() / "state" / "elements");
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
    EXPECT_EQ(scanElement(element).version, "2.0");
}

} // namespace
