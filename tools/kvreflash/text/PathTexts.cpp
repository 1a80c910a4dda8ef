#include "PathTexts.h"

#include "Texts.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::string_view lettersAndDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";

/// What else means nothing to a shell.
std::string_view plainSigns(ShellSyntax shell) {
    switch (shell) {
    case ShellSyntax::posix:
        return "/._-+,:@%";
    case ShellSyntax::windows:
        return "/\\._-+:@~";
    }
    return "";
}

bool isOneWord(const std::string& path, ShellSyntax shell) {
    const std::string_view signs = plainSigns(shell);
    return !path.empty() && visibleInLine(path) == path && std::all_of(path.begin(), path.end(), [&](char byte) {
        return static_cast<unsigned char>(byte) >= 0x80 || lettersAndDigits.find(byte) != std::string_view::npos ||
               signs.find(byte) != std::string_view::npos;
    });
}

std::string inSingleQuotes(const std::string& path) {
    std::string text = "'";
    for (const char byte : path) {
        // The quotes end, a quote stands alone, and they begin again.
        text.append(byte == '\'' ? "'\\''" : std::string(1, byte));
    }
    return text.append("'");
}

/// With every byte that is not a visible character of ASCII by its number.
std::string inEscapingQuotes(const std::string& path) {
    std::string text = "$'";
    for (const char byte : path) {
        const auto number = static_cast<unsigned char>(byte);
        if (byte == '\'' || byte == '\\') {
            text.append("\\").append(1, byte);
        } else if (number < 0x20 || number > 0x7E) {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02X", static_cast<unsigned>(number));
            text.append(code.data());
        } else {
            text += byte;
        }
    }
    return text.append("'");
}

std::string inDoubleQuotes(const std::string& path) {
    const std::size_t end = path.find_last_not_of('\\') + 1;
    // A "\" before the quote would be taken for its escape.
    return std::string("\"").append(visibleInLine(path)).append(path.size() - end, '\\').append("\"");
}

} // namespace

std::string quotedPath(const std::string& path, ShellSyntax shell) {
    switch (shell) {
    case ShellSyntax::posix:
        return visibleInLine(path) == path ? inSingleQuotes(path) : inEscapingQuotes(path);
    case ShellSyntax::windows:
        return inDoubleQuotes(path);
    }
    return path;
}

std::string shellWord(const std::string& path, ShellSyntax shell) {
    return isOneWord(path, shell) ? path : quotedPath(path, shell);
}

std::string archivePath(std::string path, ShellSyntax shell) {
    if (shell == ShellSyntax::posix) {
        std::replace(path.begin(), path.end(), '\\', '/');
    }
    return path;
}

std::string withPastablePath(std::string sentence, const std::string& folder, const std::string& description,
                             ShellSyntax shell) {
    const std::string start = folder + "\\";
    const std::size_t open = sentence.find("'" + start);
    const std::size_t close = sentence.rfind('\'');
    if (open != std::string::npos && close > open) {
        const std::string path = sentence.substr(open + 1, close - open - 1);
        sentence.replace(open, close + 1 - open, quotedPath(archivePath(path, shell), shell));
        return sentence;
    }
    const std::string whole = start + description;
    if (const std::size_t place = sentence.find(whole); place != std::string::npos) {
        sentence.replace(place, whole.size(), shellWord(archivePath(whole, shell), shell));
    }
    return sentence;
}
