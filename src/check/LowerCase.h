#pragma once

/// The lower case of an ASCII letter; any other byte as it is.
[[nodiscard]] constexpr char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}
