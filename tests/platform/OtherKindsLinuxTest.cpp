// What is not a regular file, where the emulation reads one: it is refused, and nothing waits for it.

#include "OtherKindsLinux.h"
#include "KvCInventoryData.h"
#include "TargetFixtures.h"
#include "UpdateFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::SizeIs;

/// How the reason for refusing it ends.
std::string reasonFor(const OtherKindCase& other) {
    const std::string kind(other.kind);
    return kind == "a folder" ? "Is a directory" : "It is " + kind + ", not a regular file";
}

class TargetStateOfOtherKinds : public TargetState {
protected:
    /// Calls `look` with each kind in the place of a file of the target's folder.
    template <class Look>
    void forEachKindAt(const std::string& name, Look&& look) {
        const fs::path path = target.folder().path() / name;
        for (const OtherKindCase& other : otherKindCases) {
            SCOPED_TRACE(other.about);
            fs::create_directories(path.parent_path());
            ASSERT_TRUE(other.place(path));
            look(other);
            removeOtherKind(path);
        }
    }
    const Patience patience;
};

TEST_F(TargetStateOfOtherKinds, ADescriptionIsRefused) {
    forEachKindAt("target.json", [this](const OtherKindCase& other) {
        const KvEmulation::KvTServeResult result = KvEmulation::serve(target.folder().text());
        EXPECT_FALSE(result.served);
        EXPECT_EQ(result.error, target.folder().text() + "/target.json: cannot be opened: " + reasonFor(other));
    });
}

TEST_F(TargetStateOfOtherKinds, AStateFileIsIgnoredAndKept) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    for (const char* name : {elementFile, "state/resets.json"}) {
        startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
        forEachKindAt(name, [&](const OtherKindCase& other) {
            EXPECT_THAT(target.serveAgain().warnings,
                        ElementsAre(EndsWith(std::string(name) + ": " + reasonFor(other) + "; it is ignored.")));
            Status status;
            EXPECT_NE(tryQuery(1, status), 0U);
            EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith(": " + reasonFor(other) + ".")));
            EXPECT_NE(fs::symlink_status(target.folder().path() / name).type(), fs::file_type::regular);
        });
        EXPECT_EQ(query(1), (Status{2, 1, 1}));
    }
}

TEST_F(TargetStateOfOtherKinds, ALockIsNotTaken) {
    serveElement(updateElement(1));
    openRoot();
    forEachKindAt("state/lock", [this](const OtherKindCase& /*other*/) {
        EXPECT_NE(tryLock(), 0U);
        EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    });
    lock();
}

TEST_F(TargetStateOfOtherKinds, WithoutAGuardNothingIsInstalled) {
    serveElement(updateElement(1).polls(1));
    openRoot();
    lock();
    startUpdate(1, transfer(firmwareImage(KvCVersion("2.0"), 22)));
    forEachKindAt("state/guard", [this](const OtherKindCase& /*other*/) {
        Status status;
        EXPECT_NE(tryQuery(1, status), 0U);
        EXPECT_THAT(takeErrorCodes(), ElementsAre(EmulationErrorCodes::fileAccess));
    });
    EXPECT_EQ(query(1), (Status{2, 1, 1}));
}

TEST_F(TargetStateOfOtherKinds, ALocalFileIsNotTransferred) {
    serveElement(updateElement(1));
    openRoot();
    lock();
    forEachKindAt("local", [this](const OtherKindCase& other) {
        const std::wstring local = (target.folder().path() / "local").wstring();
        RemoteFile remote;
        manager().transferFile(errors(), root, boardAddress, lockHandle, local.c_str(), nullptr, nullptr, remote);
        EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("local\": " + reasonFor(other) + ".")));
    });
    EXPECT_EQ(KvEmulation::ledger().remoteFiles, 0U);
}

TEST_F(TargetStateOfOtherKinds, AFileHoldsNoInventoryTree) {
    forEachKindAt("tree", [this](const OtherKindCase& other) {
        KvCInventoryItem* tree = nullptr;
        bool hasChecksum = false;
        std::uint32_t checksum = 0;
        const std::string path = target.folder().text() + "/tree";
        KvCInventoryData::extractInventoryTreeFromFile(errors(), path.c_str(), tree, hasChecksum, checksum);
        EXPECT_EQ(tree, nullptr);
        EXPECT_THAT(takeErrorTexts(), ElementsAre("Cannot read \"" + path + "\": " + reasonFor(other) + "."));
    });
}

TEST_F(TargetFiles, OfOtherKindsAreNeitherReadNorReplaced) {
    const Patience patience;
    EXPECT_EQ(put(top, "a"), 7);
    for (const OtherKindCase& other : otherKindCases) {
        SCOPED_TRACE(other.about);
        ASSERT_TRUE(other.place(onDisk("other")));
        EXPECT_EQ(put(top, "other"), -1);
        EXPECT_LT(rename(top, "other", "b"), 0);
        EXPECT_LT(rename(top, "a", "other"), 0);
        EXPECT_THAT(takeErrorCodes(), SizeIs(3));
        removeOtherKind(onDisk("other"));
    }
    EXPECT_EQ(content("a"), "content");
}

TEST_F(TargetFiles, LocalFilesOfOtherKindsAreNotWritten) {
    const Patience patience;
    for (const OtherKindCase& other : otherKindCases) {
        SCOPED_TRACE(other.about);
        const fs::path local = files.path() / "other";
        ASSERT_TRUE(other.place(local));
        EXPECT_EQ(KvHIM_putFileU(errors(), nullptr, client, local.wstring().c_str(), top, "a", nullptr, nullptr), -1);
        EXPECT_THAT(takeErrorTexts(), ElementsAre(EndsWith("other\": " + reasonFor(other) + ".")));
        EXPECT_FALSE(has("a"));
        removeOtherKind(local);
    }
}

} // namespace
