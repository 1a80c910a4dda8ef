#pragma once

#include "kvreflash.h"

#include <cstdint>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

/// Why a call has failed by itself.
class KvCCallFailure : public std::runtime_error {
public:
    KvCCallFailure(std::int32_t result, const std::string& text) : std::runtime_error(text), result_(result) {}

    [[nodiscard]] std::int32_t result() const { return result_; }

private:
    std::int32_t result_;
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
