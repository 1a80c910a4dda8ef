#include "BoundedWriter.h"

#include "Streams.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstddef>
#include <system_error>
#include <thread>

namespace {

/// So much is taken at once or not at all by pipes.
constexpr std::size_t pieceSize = 4096;

/// The first piece of a text: up to its size, and whole UTF-8 characters.
std::string_view firstPiece(std::string_view text) {
    constexpr std::size_t longestCharacter = 4;
    if (text.size() <= pieceSize) {
        return text;
    }
    const auto isInside = [&](std::size_t place) { return (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U; };
    std::size_t end = pieceSize;
    while (end > pieceSize - longestCharacter && isInside(end)) {
        --end;
    }
    return text.substr(0, end);
}

} // namespace

/// A piece of text on its way to the thread.
struct BoundedWriter::Desk {
    std::mutex mutex;
    std::condition_variable changed;
    std::array<char, pieceSize> piece{};
    /// 0: everything that was put here is written, or cannot be.
    std::size_t size = 0;
    bool hasFailed = false;
    bool isLost = false;
    /// Nothing will be put here any more.
    bool isLeft = false;

    void writePieces(int descriptor) {
        keepSignalsFromThread();
        std::unique_lock lock(mutex);
        while (!isLeft) {
            if (size == 0) {
                changed.wait(lock);
                continue;
            }
            // The piece stays as it is until it is written.
            lock.unlock();
            const bool isWritten = writeBytes(descriptor, {piece.data(), size});
            lock.lock();
            hasFailed = !isWritten;
            size = 0;
            changed.notify_all();
        }
    }
};

BoundedWriter::BoundedWriter(int descriptor, std::chrono::milliseconds limit)
    : descriptor_(descriptor), limit_(limit), desk_(std::make_shared<Desk>()) {}

BoundedWriter::~BoundedWriter() {
    const std::lock_guard lock(desk_->mutex);
    desk_->isLeft = true;
    desk_->changed.notify_all();
}

bool BoundedWriter::write(std::string_view text) {
    const std::unique_lock turn(turn_, limit_);
    if (!turn.owns_lock()) {
        return false;
    }
    const bool mayWait = waitsForReader(descriptor_);
    while (mayWait && !text.empty() && !desk_->isLost) {
        text.remove_prefix(writeWithoutWaiting(descriptor_, text));
        const std::string_view piece = firstPiece(text);
        if (!piece.empty() && !startThread()) {
            break;
        }
        if (!piece.empty() && !hand(piece)) {
            return false;
        }
        text.remove_prefix(piece.size());
    }
    return !desk_->isLost && writeBytes(descriptor_, text);
}

/// False if the system has no thread left: then there is nobody but the caller to wait.
bool BoundedWriter::startThread() {
    try {
        if (!hasThread_) {
            std::thread([desk = desk_, descriptor = descriptor_] { desk->writePieces(descriptor); }).detach();
        }
        hasThread_ = true;
    } catch (const std::system_error&) {
        hasThread_ = false;
    }
    return hasThread_;
}

/// Gives a piece to the thread and waits until it is written. The time is taken in steps: of one that the whole process
/// was stopped for only a step counts.
bool BoundedWriter::hand(std::string_view piece) {
    constexpr int steps = 30;
    std::unique_lock lock(desk_->mutex);
    std::copy(piece.begin(), piece.end(), desk_->piece.begin());
    desk_->size = piece.size();
    desk_->changed.notify_all();
    for (int step = 0; step < steps && desk_->size != 0; ++step) {
        desk_->changed.wait_for(lock, limit_ / steps, [this] { return desk_->size == 0; });
    }
    desk_->isLost = desk_->size != 0;
    return !desk_->isLost && !desk_->hasFailed;
}
