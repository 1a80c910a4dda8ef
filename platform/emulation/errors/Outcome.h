#pragma once

#include "EmulationErrors.h"

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

/// Why something failed: what an operation then adds to its error list.
struct Failure {
    /// One of EmulationErrors.
    std::uint32_t code = 0;
    /// A sentence.
    std::string text;
};

/// Nothing: it succeeded.
using Outcome = std::optional<Failure>;

/// A value, or why there is none.
template <class Value>
class OrFailure {
public:
    OrFailure(Value value) : content_(std::in_place_index<0>, std::move(value)) {}
    OrFailure(Failure failure) : content_(std::in_place_index<1>, std::move(failure)) {}

    [[nodiscard]] bool hasValue() const noexcept { return content_.index() == 0; }
    /// Only when hasValue().
    [[nodiscard]] Value& value() noexcept { return *std::get_if<0>(&content_); }
    [[nodiscard]] const Value& value() const noexcept { return *std::get_if<0>(&content_); }
    /// Only when not hasValue().
    [[nodiscard]] const Failure& failure() const noexcept { return *std::get_if<1>(&content_); }

private:
    std::variant<Value, Failure> content_;
};

/// `verb` says what was tried: `Cannot VERB "path": reason.`
[[nodiscard]] inline Failure fileFailure(const std::string& verb, const std::string& path, const std::string& reason) {
    return {EmulationErrors::fileAccess, "Cannot " + verb + " \"" + path + "\": " + reason + "."};
}

[[nodiscard]] inline Failure fileFailure(const std::string& verb, const std::string& path,
                                         const std::error_code& reason) {
    return fileFailure(verb, path, reason.message());
}
