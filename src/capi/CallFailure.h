#pragma once

#include "kvreflash.h"

#include <cstdint>
#include <exception>
#include <new>
#include <utility>

/// Why a call has failed by itself.
class KvCCallFailure : public std::exception {
public:
    /// `text` lasts as long as the process.
    KvCCallFailure(std::int32_t result, const char* text) : result_(result), text_(text) {}

    [[nodiscard]] std::int32_t result() const { return result_; }
    [[nodiscard]] const char* what() const noexcept override { return text_; }

private:
    std::int32_t result_;
    const char* text_;
};

/// Notes the text for kvr_last_error(), cut if it is very long.
void noteLastError(const char* text) noexcept;

/// Notes why an operation has failed that has run as it should.
[[nodiscard]] inline std::int32_t failed(const char* why) noexcept {
    noteLastError(why);
    return KVR_FAILED;
}

/// Runs an operation of the interface; whatever it throws becomes a result.
template <typename Operation>
std::int32_t guarded(Operation&& operation) noexcept {
    noteLastError("");
    try {
        return std::forward<Operation>(operation)();
    } catch (const KvCCallFailure& failure) {
        noteLastError(failure.what());
        return failure.result();
    } catch (const std::bad_alloc&) {
        noteLastError("out of memory");
        return KVR_ERROR_MEMORY;
    } catch (const std::exception& fault) {
        noteLastError(fault.what());
        return KVR_ERROR_ARGUMENT;
    }
}
