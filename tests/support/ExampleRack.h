#pragma once

#include "KvNJson.h"
#include "ScratchFolder.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// A fault with its default errors at one call of an operation.
struct SingleFault {
    std::string call;
    /// Counted from 1.
    std::uint32_t occurrence = 1;
};

/// The example archive, which has something for every part of the example rack.
[[nodiscard]] std::wstring exampleArchive();

/// The folder of the example rack itself, for what only looks at it.
[[nodiscard]] std::wstring exampleRack();

/// A copy of the example rack, served as the only target.
class ExampleRack {
public:
    ExampleRack();

    /// Forgets everything that sessions before did to the rack, and serves it with these faults.
    void serveFresh(const std::vector<SingleFault>& faults);
    /// Serves the rack, as sessions before have left it, without faults: what a process started now would find. False,
    /// and a test failure, when its state cannot be read.
    bool serveAgain();

    /// The files of the target's file system, with their content.
    [[nodiscard]] std::map<std::string, std::string> files() const;

private:
    bool serve(const std::vector<SingleFault>& faults);

    ScratchFolder folder_;
    KvNJson::json description_;
};
