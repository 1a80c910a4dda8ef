#pragma once

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "SessionLog.h"
#include "TargetBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// An emulated target, an archive for it, and the record of what happens. Ends with the check that nothing of the
/// service is held any more.
///
/// The target has a processor board HCN[1] of the type "NODE", a CN[1] below it, and I/O boards IOMODULE[n] of the type
/// "IOn" below the root. An element named "One" of the processor board is shown as "NODE, One". The element list has
/// the processor board's elements first.
class RackTest : public testing::Test {
protected:
    RackTest();
    void SetUp() override;
    void TearDown() override;

    /// Releases everything that the test has of the service.
    virtual void close() = 0;

    /// Adds an element to the processor board and an entry "nodeID.bin" of this sequence for it.
    void addNodeElement(std::uint32_t id, ItemBuilder element, std::uint32_t sequence = 1);
    /// The same for an I/O board of its own with this one element, of ID 1, and an entry "ioNUMBER.bin". Numbers count
    /// from 1.
    void addBoard(std::uint32_t number, ItemBuilder element, std::uint32_t sequence = 1);
    /// Adds an entry that is written to `targetPath`, which no element of the target claims.
    void addFile(const std::string& name, const std::string& targetPath, std::uint32_t sequence = 1);
    void addFault(const FaultBuilder& fault) { target.add(fault); }
    /// Writes target and archive, and serves the target.
    void serve();

    TargetBuilder target;
    ItemBuilder node = completeBoard("HCN", "NODE", 0);
    bool hasNode = true;
    bool hasCn = true;
    std::vector<ItemBuilder> boards;
    ArchiveFolder archive;
    SessionLog log;
    /// No pause takes time, however the test is started.
    EnvironmentVariable timeScale{"KV_TIME_SCALE", "0"};
    /// How many releases of what does not exist the test provokes.
    std::uint32_t expectedBadReleases = 0;
};

/// The lines that a report shows of the error that a fault adds by default.
[[nodiscard]] std::string faultReport(const std::string& call);
