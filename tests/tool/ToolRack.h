#pragma once

#include "ArchiveFolder.h"
#include "CompleteItems.h"
#include "EnvironmentVariable.h"
#include "KvNJson.h"
#include "TargetBuilder.h"
#include "ToolRun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// An archive and an emulated target, described by a test, and the tool's commands on them. The target has one
/// processor board HCN[1] of the type "NODE".
class ToolRack : public testing::Test {
protected:
    /// Runs a command with the archive and the target, which are written at the first call.
    [[nodiscard]] ToolRun run(const std::string& command, const std::vector<std::string>& options = {}) {
        if (rack_.empty()) {
            archive.write();
            target.add(node);
            for (const ItemBuilder& board : boards) {
                target.add(board);
            }
            rack_ = target.write();
        }
        std::vector<std::string> arguments{command,     "-a", archive.folder().text(), "-t", "127.0.0.1",
                                           "--emulate", rack_};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runCaptured(arguments);
    }

    /// Adds an element to the processor board and an entry "nodeID.bin" for it, version 2.0 instead of 1.0.
    void addNodeElement(std::uint32_t id, const std::string& name) {
        node.element(completeElement(id, name));
        archive.add(entry("node" + std::to_string(id) + ".bin").board("NODE", id));
    }

    /// The folder of the target, once it is written.
    [[nodiscard]] const std::string& rack() const { return rack_; }

    ArchiveFolder archive;
    TargetBuilder target;
    ItemBuilder node = completeBoard("HCN", "NODE", 7);
    /// The other boards.
    std::vector<ItemBuilder> boards;

private:
    EnvironmentVariable timeScale_{"KV_TIME_SCALE", "0"};
    std::string rack_;
};
