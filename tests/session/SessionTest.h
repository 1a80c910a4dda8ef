#pragma once

#include "KvIReflasher.h"
#include "RackTest.h"

#include <cstdint>
#include <memory>
#include <vector>

/// One session after the other with the emulated target and the archive, through the library's interface alone. A
/// test describes both, sets the options, and calls prepare().
class SessionTest : public RackTest {
protected:
    SessionTest();

    /// The session; made of the options when there is none.
    KvIReflasher& session();
    /// Prepares the session in this mode; the first time in a test it writes and serves target and archive before.
    std::uint32_t prepare(std::uint32_t mode);
    [[nodiscard]] bool run() { return session().run(); }
    /// Prepares and runs a session, which expects prepare() to succeed; run's result.
    bool perform(std::uint32_t mode);
    /// Deletes the session.
    void close() override { session_.reset(); }
    /// Makes the session that session() returns.
    virtual std::unique_ptr<KvIReflasher> makeSession();

    std::vector<KvNReflasher::KvTUpdateElementInfo> updateElements();
    std::vector<KvNReflasher::KvTArchiveFileInfo> archiveFiles();
    /// The version text of the library.
    std::string libraryVersion();
    /// What a session prints before anything else.
    std::string banner();

    /// Empty texts, no flags, mode 0.
    KvNReflasher::KvTOptions options{};

private:
    bool isServed_ = false;
    std::unique_ptr<KvIReflasher> session_;
};

/// What run() prints at the end when errors were collected.
[[nodiscard]] std::string reportedErrors(const std::string& report);
