#pragma once

#include "KvIReflasher.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A session whose messages go into the process's transcript, with its queries. Checks that they fit each other.
class SessionRun {
public:
    explicit SessionRun(KvNReflasher::KvTOptions options);

    /// Prepares the session, which prints why when that fails.
    std::uint32_t prepare();
    [[nodiscard]] bool run() { return session_->run(); }
    [[nodiscard]] KvIReflasher& session() const { return *session_; }

    [[nodiscard]] std::vector<KvNReflasher::KvTUpdateElementInfo> elements() const;
    [[nodiscard]] std::vector<KvNReflasher::KvTArchiveFileInfo> files() const;
    /// The queries' answers as text.
    [[nodiscard]] std::string answers() const;

private:
    std::uint32_t mode_;
    std::unique_ptr<KvIReflasher> session_;
};

/// Options for the target that the emulation serves at 127.0.0.1.
[[nodiscard]] KvNReflasher::KvTOptions optionsOfMode(std::uint32_t mode);
