#pragma once

#include "ScratchFolder.h"

#include <string>

/// Leads standard output into a file while it lives.
class StandardOutputCapture {
public:
    StandardOutputCapture();
    StandardOutputCapture(const StandardOutputCapture&) = delete;
    StandardOutputCapture(StandardOutputCapture&&) = delete;
    StandardOutputCapture& operator=(const StandardOutputCapture&) = delete;
    StandardOutputCapture& operator=(StandardOutputCapture&&) = delete;
    ~StandardOutputCapture();

    /// What has arrived so far; what the process still buffers is not part of it.
    [[nodiscard]] std::string received() const { return folder_.read("output"); }

private:
    ScratchFolder folder_;
    int formerDescriptor_;
};
