#pragma once

#include "Shell.h"

#include <string>

// Paths (UTF-8) in the tool's own texts: as they are shown, they can be pasted into a command line.

/// `path` in quotes, in one line. A control character, and what visibleInLine() replaces besides, is written by its
/// bytes in the form $'\xHH', which most POSIX shells take; on Windows no path has them. cmd replaces variables between
/// quotes, too, and has no way to write a "%" otherwise.
[[nodiscard]] std::string quotedPath(const std::string& path, ShellSyntax shell = systemShell());

/// `path` as it is if a shell takes it as one word that is not changed, else as quotedPath() has it.
[[nodiscard]] std::string shellWord(const std::string& path, ShellSyntax shell = systemShell());

/// A path of the archive or into it, as the system has it: where "\" separates no components, "/" does.
[[nodiscard]] std::string archivePath(std::string path, ShellSyntax shell = systemShell());

/// A sentence of the library, which joins the paths of an archive with "\": the path of the description, or one between
/// single quotes, of the archive in `folder` is replaced by one that can be pasted.
[[nodiscard]] std::string withPastablePath(std::string sentence, const std::string& folder,
                                           const std::string& description, ShellSyntax shell = systemShell());
