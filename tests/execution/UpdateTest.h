#pragma once

#include "KvCConsoleWriter.h"
#include "KvCErrorManager.h"
#include "KvCFirmwareArchive.h"
#include "KvCTargetAccess.h"
#include "KvCTargetInventory.h"
#include "KvCUpdateDriver.h"
#include "KvCUpdatePlanner.h"
#include "KvTCallbacks.h"
#include "RackTest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// An update driver and what it works with. A test describes target and archive, prepares the update, may change the
/// plan, and runs it.
class UpdateTest : public RackTest {
protected:
    UpdateTest();

    /// The session is given no notification functions but that for messages.
    void withoutNotifications();

    /// Makes the update ready to run: serves the target, reads the archive, scans and plans. Forgets what was recorded.
    void prepare();
    /// The last part of prepare(): begins another session with the target as it is now.
    void beginSession();
    /// Runs the update; its result.
    bool run();
    /// prepare() and run().
    bool update();
    /// Releases driver, plan and target handles.
    void close() override { session_.reset(); }

    /// The element at this place of the element list.
    [[nodiscard]] const KvTUpdateElement& element(std::size_t index);
    /// Its plan and its run, to be changed.
    /// @{
    [[nodiscard]] KvTElementPlan& planOf(std::size_t index) { return session_->inventory.planOf(element(index).index); }
    [[nodiscard]] KvTElementRun& runOf(std::size_t index) { return session_->inventory.runOf(element(index).index); }
    /// @}
    [[nodiscard]] KvCFirmwareArchive& readArchive() { return session_->archive; }
    [[nodiscard]] KvCFileWatch& fileWatch() { return session_->watch; }
    /// The states of all elements.
    [[nodiscard]] std::vector<std::uint32_t> states();
    /// The error list that the session is given.
    [[nodiscard]] static KvCErrorListPool& errors() { return KvCErrorManager::getInstance()->getMasterErrorList(); }
    [[nodiscard]] static std::vector<std::string> textsOf(const KvCErrorListPool& list);
    /// The contents of the files that the target holds for updates, which are the names that they have in the archive.
    [[nodiscard]] std::vector<std::string> remoteFiles() const;

    KvNReflasher::KvTOptions options{};

private:
    /// The parts of a session, as the updater object holds them.
    struct Session {
        Session(const KvTCallbacks& callbacks, const KvNReflasher::KvTOptions& options)
            : writer(callbacks), access(writer, options, errors()), archive(writer, options),
              inventory(writer, options, errors()), planner(options, archive, inventory),
              driver({writer, callbacks, options, archive, inventory, errors(), control, watch}, planner, access) {}

        KvCConsoleWriter writer;
        KvCTargetAccess access;
        KvCFirmwareArchive archive;
        KvCTargetInventory inventory;
        KvCUpdatePlanner planner;
        KvCUpdateControl control;
        KvCFileWatch watch{archive};
        KvCUpdateDriver driver;
    };

    KvTCallbacks callbacks_;
    std::optional<Session> session_;
};

/// The line of a file's transfer.
[[nodiscard]] std::string transferLine(const std::string& name, const std::string& verdict = "[OK]");
