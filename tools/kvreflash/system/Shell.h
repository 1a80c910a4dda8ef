#pragma once

#include <cstdint>

/// How the command lines of a system are read.
enum class ShellSyntax : std::uint8_t {
    /// By a POSIX shell.
    posix,
    /// By cmd, and then by the C runtime of the program that is called.
    windows
};

/// That of this system.
[[nodiscard]] ShellSyntax systemShell();
