#include "MatchingOracle.h"

#include <initializer_list>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

jsonView memberOf(jsonView object, std::string_view key) {
    for (std::size_t member = 0; object.is_object() && member < object.size(); ++member) {
        if (object.key(member) == key) {
            return object.at(member);
        }
    }
    return {};
}

bool scalarMatches(jsonView archiveValue, jsonView elementValue) {
    if (archiveValue.is_null() && elementValue.is_null()) {
        return true;
    }
    if (archiveValue.is_string() && elementValue.is_string()) {
        return archiveValue.get_string() == elementValue.get_string();
    }
    if (archiveValue.is_number_unsigned() && elementValue.is_number_unsigned()) {
        return archiveValue.get_unsigned() == elementValue.get_unsigned();
    }
    return false;
}

/// The board that stands for the element in the entry: the entry itself, or the first fitting one of its "boards".
jsonView selectedBoard(jsonView entry, const json& boardType) {
    const jsonView boards = memberOf(entry, "boards");
    if (!boards.is_valid()) {
        return valueMatches(memberOf(entry, "boardType"), boardType) ? entry : jsonView();
    }
    for (std::size_t index = 0; index < boards.size(); ++index) {
        if (valueMatches(memberOf(boards.at(index), "boardType"), boardType)) {
            return boards.at(index);
        }
    }
    return {};
}

jsonView inherited(jsonView board, jsonView entry, std::string_view key) {
    const jsonView own = memberOf(board, key);
    return own.is_valid() ? own : memberOf(entry, key);
}

} // namespace

bool valueMatches(jsonView archiveValue, const json& elementValue) {
    if (!archiveValue.is_array()) {
        return scalarMatches(archiveValue, elementValue.view());
    }
    for (std::size_t index = 0; index < archiveValue.size(); ++index) {
        if (scalarMatches(archiveValue.at(index), elementValue.view())) {
            return true;
        }
    }
    return false;
}

bool entryMatches(const KvTUpdateElement& element, const KvTArchiveFile& file, std::string& targetPath) {
    const jsonView entry = file.description->view();
    const jsonView board = selectedBoard(entry, json(element.boardType));
    if (!board.is_valid()) {
        return false;
    }
    const json zero(std::uint32_t{0});
    const json null;
    const auto fits = [&](std::string_view key, const json& absent, const json& elementValue) {
        const jsonView value = inherited(board, entry, key);
        return valueMatches(value.is_valid() ? value : absent.view(), elementValue);
    };
    if (!fits("boardVariant", null, element.boardVariant.isEmpty() ? json() : json(element.boardVariant)) ||
        !fits("boardId", zero, json(element.boardId)) || element.isFileSystemElement != file.hasTargetPath) {
        return false;
    }
    if (!file.hasTargetPath) {
        const jsonView id = inherited(board, entry, "id");
        if (!id.is_valid() || static_cast<std::uint32_t>(id.get_unsigned()) != element.elementId) {
            return false;
        }
    } else {
        targetPath = inherited(board, entry, "targetPath").get_string();
        if (!(element.location == "*") && !(element.location == std::string_view(targetPath))) {
            return false;
        }
    }
    return fits("hwCompatibilityId", zero, json(element.hwCompatibilityId)) &&
           fits("swCompatibilityId", zero, json(element.swCompatibilityId));
}

std::uint32_t firstMatch(const KvTUpdateElement& element, const std::vector<KvTArchiveFile>& files) {
    std::string targetPath;
    for (std::uint32_t index = 0; index < files.size(); ++index) {
        if (entryMatches(element, files[index], targetPath)) {
            return index;
        }
    }
    return noArchiveFile;
}
