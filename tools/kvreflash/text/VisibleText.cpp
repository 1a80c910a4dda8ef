#include "Texts.h"

#include "CharacterWidths.h"

#include <boost/locale/utf.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace {

using boost::locale::utf::code_point;
using boost::locale::utf::is_valid_codepoint;
using boost::locale::utf::utf_traits;

/// A character of a text, or a byte that belongs to none and is taken for the character of its number.
struct Piece {
    std::string_view bytes;
    code_point character = 0;
    bool isCharacter = false;
};

/// Takes the first piece off the beginning of `text`, which must not be empty.
Piece takePiece(std::string_view& text) {
    const char* end = text.data();
    const code_point character = utf_traits<char>::decode(end, text.data() + text.size());
    Piece piece{text.substr(0, 1), static_cast<unsigned char>(text.front()), false};
    if (is_valid_codepoint(character)) {
        piece = {text.substr(0, static_cast<std::size_t>(end - text.data())), character, true};
    }
    text.remove_prefix(piece.bytes.size());
    return piece;
}

/// What stays as it is.
struct Rule {
    std::string_view controls;
    /// Bytes that belong to no character, but for those of the numbers of control characters.
    bool keepsStrayBytes = false;
};
constexpr Rule onTerminal{"\n\r\t", true};
constexpr Rule inLines{"\n\t", false};
constexpr Rule inLine{};

bool isControl(code_point character) {
    return character < 0x20 || (character > 0x7E && character < 0xA0);
}

/// Characters that end a line, turn its direction or take no place: what a terminal shows is not what is there.
/// Unicode's Default_Ignorable_Code_Point, line and paragraph separators, and interlinear annotations.
constexpr std::array misleading = {
    CharacterRange{0x00AD, 0x00AD},   CharacterRange{0x034F, 0x034F},  CharacterRange{0x061C, 0x061C},
    CharacterRange{0x115F, 0x1160},   CharacterRange{0x17B4, 0x17B5},  CharacterRange{0x180B, 0x180F},
    CharacterRange{0x200B, 0x200F},   CharacterRange{0x2028, 0x202E},  CharacterRange{0x2060, 0x206F},
    CharacterRange{0x3164, 0x3164},   CharacterRange{0xFE00, 0xFE0F},  CharacterRange{0xFEFF, 0xFEFF},
    CharacterRange{0xFFA0, 0xFFA0},   CharacterRange{0xFFF0, 0xFFFB},  CharacterRange{0x1BCA0, 0x1BCA3},
    CharacterRange{0x1D173, 0x1D17A}, CharacterRange{0xE0000, 0xE0FFF}};

bool isReplaced(const Piece& piece, const Rule& rule) {
    if (isControl(piece.character)) {
        return piece.character > 0x7E || rule.controls.find(piece.bytes.front()) == std::string_view::npos;
    }
    return piece.isCharacter ? isWithin(misleading, piece.character) : !rule.keepsStrayBytes;
}

std::string escaped(code_point character) {
    std::array<char, 16> text{};
    const auto number = static_cast<unsigned>(character);
    if (number < 0x100) {
        std::snprintf(text.data(), text.size(), "\\x%02X", number);
    } else {
        std::snprintf(text.data(), text.size(), "\\u{%04X}", number);
    }
    return text.data();
}

std::string shownAs(const Piece& piece, const Rule& rule) {
    return isReplaced(piece, rule) ? escaped(piece.character) : std::string(piece.bytes);
}

std::string visible(std::string_view text, const Rule& rule) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Piece piece = takePiece(text);
        if (isReplaced(piece, rule)) {
            result += escaped(piece.character);
        } else {
            result += piece.bytes;
        }
    }
    return result;
}

} // namespace

std::string visibleOnTerminal(const std::string& text) {
    return visible(text, onTerminal);
}

std::string visibleInLines(const std::string& text) {
    return visible(text, inLines);
}

std::string visibleInLine(const std::string& text) {
    return visible(text, inLine);
}

Beginning beginningOf(const std::string& text, std::size_t limit) {
    Beginning beginning;
    std::size_t taken = 0;
    for (std::string_view rest = text; !rest.empty(); ++beginning.characterCount) {
        const Piece piece = takePiece(rest);
        if (beginning.isCut) {
            continue;
        }
        const std::string shown = shownAs(piece, inLine);
        const std::size_t columns = std::max<std::size_t>(columnsOf(shown), 1);
        beginning.isCut = columns > limit - taken;
        if (!beginning.isCut) {
            beginning.shown += shown;
            taken += columns;
        }
    }
    return beginning;
}

std::size_t columnsOf(const std::string& text) {
    std::size_t columns = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const Piece piece = takePiece(rest);
        columns += piece.isCharacter ? columnsOfCharacter(piece.character) : 1;
    }
    return columns;
}
