#include "EntryOracle.h"

#include <algorithm>
#include <iterator>

namespace {

using Kind = JsonModel::Kind;

bool isKind(const JsonModel* value, Kind kind) {
    return value != nullptr && value->kind == kind;
}

/// The message about one property of an entry, or of element `board` of its "boards" when that is not below 0.
struct Place {
    unsigned entry;
    int board;

    [[nodiscard]] std::wstring message(const std::string& key, const std::wstring& boards,
                                       const std::wstring& end) const {
        std::wstring text = L"ERROR: File entry " + std::to_wstring(entry) + L" is invalid. Property \"";
        text.append(key.begin(), key.end()).append(L"\"");
        if (board >= 0) {
            text.append(L" of ").append(boards).append(L" ").append(std::to_wstring(board));
        }
        return text.append(L" ").append(end).append(L".\n");
    }
};

std::string lastWrongType(const JsonModel& object) {
    std::string wrong;
    const auto test = [&](const char* key, std::initializer_list<Kind> allowed) {
        const JsonModel* const value = object.find(key);
        if (value != nullptr && std::find(allowed.begin(), allowed.end(), value->kind) == allowed.end()) {
            wrong = key;
        }
    };
    test("boardType", {Kind::text, Kind::array});
    test("boardVariant", {Kind::null, Kind::text, Kind::array});
    test("boardId", {Kind::unsignedNumber, Kind::array});
    test("id", {Kind::unsignedNumber});
    test("targetPath", {Kind::text});
    test("hwCompatibilityId", {Kind::unsignedNumber, Kind::array});
    test("swCompatibilityId", {Kind::unsignedNumber, Kind::array});
    test("version", {Kind::text, Kind::null});
    test("checksumCrc32", {Kind::unsignedNumber});
    test("mode", {Kind::text});
    return wrong;
}

std::string firstWrongArray(const JsonModel& object) {
    std::string wrong;
    const auto test = [&](const char* key, Kind allowed, Kind allowedToo) {
        const JsonModel* const value = object.find(key);
        if (!wrong.empty() || !isKind(value, Kind::array)) {
            return;
        }
        for (const JsonModel& item : value->items) {
            if (item.kind != allowed && item.kind != allowedToo) {
                wrong = key;
            }
        }
    };
    test("boardType", Kind::text, Kind::text);
    test("boardVariant", Kind::text, Kind::null);
    test("boardId", Kind::unsignedNumber, Kind::unsignedNumber);
    test("hwCompatibilityId", Kind::unsignedNumber, Kind::unsignedNumber);
    test("swCompatibilityId", Kind::unsignedNumber, Kind::unsignedNumber);
    return wrong;
}

/// The message about the properties of one object; empty when they are right.
std::wstring judgeProperties(const JsonModel& object, const Place& place) {
    if (const std::string key = lastWrongType(object); !key.empty()) {
        return place.message(key, L"\"boards\"-element", L"has an invalid value");
    }
    if (const std::string key = firstWrongArray(object); !key.empty()) {
        return place.message(key, L"\"boards\" element", L"has invalid elements");
    }
    const JsonModel* const version = object.find("version");
    if (isKind(version, Kind::text) &&
        std::find(std::begin(goodVersions), std::end(goodVersions), version->scalar) == std::end(goodVersions)) {
        return place.message("version", L"\"boards\" element", L"is invalid");
    }
    const JsonModel* const mode = object.find("mode");
    if (mode != nullptr && mode->scalar != "standard" && mode->scalar != "upgrade") {
        return place.message("mode", L"\"boards\" element", L"is invalid");
    }
    if (place.board >= 0 && (version != nullptr || mode != nullptr || object.find("checksumCrc32") != nullptr)) {
        return L"ERROR: File entry " + std::to_wstring(place.entry) + L" is invalid. \"boards\" element " +
               std::to_wstring(place.board) +
               L" is invalid. Properties \"version\", \"checksumCrc32\" and \"mode\" must not be specified inside a "
               L"\"boards\" element.\n";
    }
    return L"";
}

bool hasMandatory(const JsonModel& entry) {
    const JsonModel* const boardType = entry.find("boardType");
    const JsonModel* const boards = entry.find("boards");
    if (!isKind(entry.find("name"), Kind::text) || !isKind(entry.find("sequence"), Kind::unsignedNumber)) {
        return false;
    }
    if ((boardType == nullptr) == (boards == nullptr)) {
        return false;
    }
    return boards == nullptr || (boards->kind == Kind::array && !boards->items.empty());
}

/// The message about the elements of "boards"; empty when they are right.
std::wstring judgeBoards(const std::vector<JsonModel>& boards, unsigned index) {
    for (std::size_t board = 0; board < boards.size(); ++board) {
        if (boards[board].find("boardType") == nullptr) {
            return L"ERROR: File entry " + std::to_wstring(index) + L" is invalid. \"boards\"-entry " +
                   std::to_wstring(board) + L" is invalid.\n";
        }
        std::wstring message = judgeProperties(boards[board], {index, static_cast<int>(board)});
        if (!message.empty()) {
            return message;
        }
    }
    return L"";
}

bool occurs(const char* key, const JsonModel& entry, const std::vector<JsonModel>& boards) {
    return entry.find(key) != nullptr || std::any_of(boards.begin(), boards.end(), [key](const JsonModel& board) {
               return board.find(key) != nullptr;
           });
}

/// The message about "id" and "targetPath" of an entry that is right otherwise; empty when they are right.
std::wstring judgeAddresses(const JsonModel& entry, const std::vector<JsonModel>& boards, const std::wstring& begin) {
    if (occurs("id", entry, boards) && occurs("targetPath", entry, boards)) {
        return begin + L" Properties \"id\" and \"targetPath\" must not be specified at the same time.\n";
    }
    const bool everyBoardHasOne = std::all_of(boards.begin(), boards.end(), [](const JsonModel& board) {
        return board.find("id") != nullptr || board.find("targetPath") != nullptr;
    });
    const bool isFreed = !boards.empty() && everyBoardHasOne;
    if (!isFreed && entry.find("id") == nullptr && entry.find("targetPath") == nullptr) {
        return begin + L" Either \"id\" or \"targetPath\" must be specified.\n";
    }
    return L"";
}

/// The message about an entry whose feature level is no hindrance; empty when it is accepted.
std::wstring judgeSupported(const JsonModel& entry, unsigned index, const std::wstring& begin) {
    if (!hasMandatory(entry)) {
        return begin + L" A mandatory property is missing or invalid.\n";
    }
    std::wstring message = judgeProperties(entry, {index, -1});
    if (!message.empty()) {
        return message;
    }
    const JsonModel* const boards = entry.find("boards");
    const std::vector<JsonModel> elements = boards != nullptr ? boards->items : std::vector<JsonModel>();
    message = judgeBoards(elements, index);
    return message.empty() ? judgeAddresses(entry, elements, begin) : message;
}

} // namespace

JudgedEntry judgeEntry(const JsonModel& entry, unsigned index) {
    using enum JudgedEntry::Outcome;
    const std::wstring begin = L"ERROR: File entry " + std::to_wstring(index) + L" is invalid.";
    if (entry.kind != Kind::object) {
        return {refused, begin + L"\n"};
    }
    if (const JsonModel* const level = entry.find("featureLevel"); level != nullptr) {
        if (level->kind != Kind::unsignedNumber) {
            return {refused, begin + L" Property \"featureLevel\" is invalid.\n"};
        }
        if (level->scalar != "0" && level->scalar != "1" && level->scalar != "2") {
            return {skipped,
                    L"WARNING: File entry " + std::to_wstring(index) + L" is not supported. Ignoring this entry.\n"};
        }
    }
    const std::wstring message = judgeSupported(entry, index, begin);
    if (!message.empty()) {
        return {refused, message};
    }
    const JsonModel* const boards = entry.find("boards");
    return {accepted, L"", occurs("targetPath", entry, boards != nullptr ? boards->items : std::vector<JsonModel>())};
}
