#pragma once

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "KvCConsoleWriter.h"
#include "KvCErrorManager.h"
#include "KvCFirmwareArchive.h"
#include "KvCTargetAccess.h"
#include "KvCTargetInventory.h"
#include "KvCUpdateDriver.h"
#include "KvCUpdatePlanner.h"
#include "KvTCallbacks.h"
#include "SessionLog.h"
#include "TargetBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// An update driver and what it works with: an emulated target, an archive, and the plan that was made of them. A test
/// describes the target and the archive, prepares the update, may change the plan, and runs it.
///
/// The target has a processor board HCN[1] of the type "NODE", a CN[1] below it, and I/O boards IOMODULE[n] of the type
/// "IOn" below the root. An element named "One" of the processor board is shown as "NODE, One". The element list has
/// the processor board's elements first.
class UpdateTest : public testing::Test {
protected:
    UpdateTest();
    void SetUp() override;
    /// Expects that nothing of the service is held any more, and that nothing but `expectedBadReleases` was released
    /// that did not exist.
    void TearDown() override;

    /// Adds an element to the processor board and an entry "nodeID.bin" of this sequence for it.
    void addNodeElement(std::uint32_t id, ItemBuilder element, std::uint32_t sequence = 1);
    /// The same for an I/O board of its own with this one element, of ID 1, and an entry "ioNUMBER.bin". Numbers count
    /// from 1.
    void addBoard(std::uint32_t number, ItemBuilder element, std::uint32_t sequence = 1);
    /// Adds an entry that is written to `targetPath`, which no element of the target claims.
    void addFile(const std::string& name, const std::string& targetPath, std::uint32_t sequence = 1);
    void addFault(const FaultBuilder& fault) { target.add(fault); }
    /// The session is given no notification functions but that for messages.
    void withoutNotifications();

    /// Makes the update ready to run: serves the target, reads the archive, scans and plans. Forgets what was recorded.
    void prepare();
    /// Runs the update; its result.
    bool run();
    /// prepare() and run().
    bool update();
    /// Releases driver, plan and target handles.
    void close() { session_.reset(); }

    /// The element at this place of the element list.
    [[nodiscard]] KvTUpdateElement& element(std::size_t index);
    [[nodiscard]] KvCFirmwareArchive& readArchive() { return session_->archive; }
    /// The states of all elements.
    [[nodiscard]] std::vector<std::uint32_t> states();
    /// The error list that the session is given.
    [[nodiscard]] static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    [[nodiscard]] static std::vector<std::string> textsOf(const KvCErrorListPool& list);
    /// The contents of the files that the target holds for updates, which are the names that they have in the archive.
    [[nodiscard]] std::vector<std::string> remoteFiles() const;

    TargetBuilder target;
    ItemBuilder node = completeBoard("HCN", "NODE", 0);
    bool hasNode = true;
    bool hasCn = true;
    std::vector<ItemBuilder> boards;
    ArchiveFolder archive;
    KvNReflasher::KvTOptions options{};
    SessionLog log;
    std::uint32_t expectedBadReleases = 0;

private:
    /// The parts of a session, as the updater object holds them.
    struct Session {
        Session(const KvTCallbacks& callbacks, const KvNReflasher::KvTOptions& options)
            : writer(callbacks), access(writer, options), archive(writer, options), inventory(writer, options),
              planner(writer, options, archive, inventory), driver(writer, callbacks, options, planner, access) {}

        KvCConsoleWriter writer;
        KvCTargetAccess access;
        KvCFirmwareArchive archive;
        KvCTargetInventory inventory;
        KvCUpdatePlanner planner;
        KvCUpdateDriver driver;
    };

    KvTCallbacks callbacks_;
    std::optional<Session> session_;
};

/// The event of a message of ASCII characters.
[[nodiscard]] std::string said(const std::string& text);

/// The lines that a report shows of the error that a fault adds by default.
[[nodiscard]] std::string faultReport(const std::string& call);

/// The line of a file's transfer.
[[nodiscard]] std::string transferLine(const std::string& name, const std::string& verdict = "[OK]");
