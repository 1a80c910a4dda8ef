#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string_view>

/// Writes to a descriptor whose reader may never read: nobody waits longer for it than a limit. Any thread may write;
/// texts of several threads do not mix.
class BoundedWriter {
public:
    /// The descriptor stays open as long as the process.
    BoundedWriter(int descriptor, std::chrono::milliseconds limit);
    BoundedWriter(const BoundedWriter&) = delete;
    BoundedWriter& operator=(const BoundedWriter&) = delete;
    ~BoundedWriter();

    /// Returns whether all of the text was taken. If nothing is taken for the time of the limit, the reader counts as
    /// lost: the rest and every later text are dropped at once. A text that has to wait so long for another thread's is
    /// dropped, too.
    [[nodiscard]] bool write(std::string_view text);

private:
    struct Desk;

    [[nodiscard]] bool startThread();
    [[nodiscard]] bool hand(std::string_view piece);

    const int descriptor_;
    const std::chrono::milliseconds limit_;
    /// Held by whoever writes.
    std::timed_mutex turn_;
    bool hasThread_ = false;
    /// Where a thread of its own gets from what it writes, and may wait for ever.
    std::shared_ptr<Desk> desk_;
};
