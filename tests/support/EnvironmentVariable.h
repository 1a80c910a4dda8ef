#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Sets a variable of the process's environment; the former value comes back at the end.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string name, const std::string& value);
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable(EnvironmentVariable&&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable&&) = delete;
    ~EnvironmentVariable();

private:
    std::string name_;
    std::optional<std::string> former_;
};

/// A number from the environment, for longer or shorter runs than the usual.
[[nodiscard]] std::uint32_t numberFromEnvironment(const char* name, std::uint32_t usual);
