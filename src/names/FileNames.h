#pragma once

#include <string>
#include <string_view>

// What names of files may be, wherever the files will be: on Linux, on Windows, on a target.

/// The lower case of an ASCII letter; any other byte as it is.
[[nodiscard]] constexpr char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/// `text` with the lower case of its ASCII letters.
[[nodiscard]] std::string lowerCaseOf(std::string_view text);

/// `text` (UTF-8) in one case: texts that differ only in the case of their letters, of any alphabet, become the same.
/// Letters without a partner of one character, such as the German sharp s, and bytes that are not UTF-8 stay.
[[nodiscard]] std::string foldedCaseOf(std::string_view text);

/// True if `text` is well-formed UTF-8.
[[nodiscard]] bool isUtf8(std::string_view text);

/// The name of the first character that does not show as what it is, such as "U+202E": control characters, and those
/// that end a line, turn its direction or take no place. Empty if there is none. `text` is UTF-8.
[[nodiscard]] std::string hiddenCharacterOf(std::string_view text);

/// True of a name, without folders, that Windows takes for a device, such as "NUL" or "com1.ini".
[[nodiscard]] bool isDeviceName(std::string_view name);

/// True of a name, without folders, that a file cannot have on Windows. Separators, control characters and devices are
/// judged elsewhere; the empty name, "." and ".." are none.
[[nodiscard]] bool isUnportableName(std::string_view name);

/// Why a file in an archive must not be called so; empty if it may. A name that may is relative, its folders are
/// separated by "/", it leads out of no folder, and every system takes it for the same file.
[[nodiscard]] std::string whyUnsafe(std::string_view name);
