#include "RandomDescriptions.h"

#include "EntryOracle.h"

#include <array>
#include <iterator>

namespace {

constexpr std::array<std::string_view, 15> entryKeys = {
    "name",         "sequence",          "featureLevel",      "boards",        "boardType",
    "boardVariant", "boardId",           "version",           "mode",          "id",
    "targetPath",   "hwCompatibilityId", "swCompatibilityId", "checksumCrc32", "comment"};

constexpr std::array<std::string_view, 7> documentKeys = {
    "info", "files", "formatVersion", "archiveVersion", "productName", "archiveVariant", "archiveName"};

bool holdsArrays(std::string_view key) {
    return key == "boardType" || key == "boardVariant" || key.ends_with("Id") || key == "boards";
}

} // namespace

std::string_view RandomDescriptions::anyKey() {
    return oneIn(3) ? documentKeys[below(documentKeys.size())] : entryKeys[below(entryKeys.size())];
}

JsonModel RandomDescriptions::anyScalar() {
    static constexpr std::array<std::string_view, 5> others = {"-1", "1.5", "2.0", "1e3", "18446744073709551616"};
    static constexpr std::array<std::string_view, 6> texts = {"", "QB", "standard", "Upgrade", "0.0", "x"};
    switch (below(6)) {
    case 0:
        return {};
    case 1:
        return JsonModel::boolean(oneIn(2));
    case 2:
        return JsonModel::otherNumber(others[below(others.size())]);
    case 3:
        return JsonModel::text(texts[below(texts.size())]);
    case 4:
        return JsonModel::text(goodVersions[below(std::size(goodVersions))]);
    default:
        return JsonModel::number(oneIn(4) ? 4294967294U : below(5));
    }
}

JsonModel RandomDescriptions::anyValue(std::size_t depth) {
    if (depth == 0 || !oneIn(3)) {
        return anyScalar();
    }
    const bool isArray = oneIn(2);
    JsonModel value = isArray ? JsonModel::array({}) : JsonModel::object({});
    for (std::size_t count = below(4); count > 0; --count) {
        if (isArray) {
            value.items.push_back(anyValue(depth - 1));
        } else {
            value.set(anyKey(), anyValue(depth - 1));
        }
    }
    return value;
}

/// A value that `key` may well have: of a right type more often than not.
JsonModel RandomDescriptions::valueFor(std::string_view key) {
    if (holdsArrays(key) && oneIn(2)) {
        JsonModel value = JsonModel::array({});
        const bool isText = key == "boardType" || key == "boardVariant";
        for (std::size_t count = below(4); count > 0; --count) {
            const JsonModel right = isText ? JsonModel::text("QB") : JsonModel::number(below(9));
            value.items.push_back(oneIn(4) ? anyScalar() : key == "boards" ? goodObject() : right);
        }
        return value;
    }
    if (key == "boardType" || key == "boardVariant" || key == "targetPath" || key == "name") {
        return oneIn(8) ? JsonModel() : JsonModel::text("QB");
    }
    if (key == "version") {
        return oneIn(3) ? JsonModel::text("0.0") : JsonModel::text(goodVersions[below(std::size(goodVersions))]);
    }
    if (key == "mode") {
        static constexpr std::array<std::string_view, 4> modes = {"standard", "upgrade", "Upgrade", ""};
        return JsonModel::text(modes[below(modes.size())]);
    }
    return JsonModel::number(below(5));
}

/// What an entry and an element of "boards" have in common.
JsonModel RandomDescriptions::goodObject() {
    JsonModel object = JsonModel::object({{"boardType", JsonModel::text("QB")}});
    if (!oneIn(4)) {
        object.set("id", JsonModel::number(below(20)));
    }
    if (oneIn(4)) {
        object.set("boardVariant", JsonModel::array({JsonModel(), JsonModel::text("lab")}));
    }
    if (oneIn(4)) {
        object.set("boardId", JsonModel::number(below(3)));
    }
    return object;
}

JsonModel RandomDescriptions::goodEntry() {
    JsonModel entry =
        JsonModel::object({{"name", JsonModel::text("a.bin")}, {"sequence", JsonModel::number(below(50))}});
    if (oneIn(2)) {
        JsonModel boards = JsonModel::array({});
        for (std::size_t count = 1 + below(3); count > 0; --count) {
            boards.items.push_back(goodObject());
        }
        entry.set("boards", boards);
    } else {
        entry.set("boardType", JsonModel::text("QB"));
    }
    if (!oneIn(4)) {
        entry.set("id", JsonModel::number(below(20)));
    }
    if (oneIn(2)) {
        entry.set("version", JsonModel::text(goodVersions[below(std::size(goodVersions))]));
    }
    if (oneIn(2)) {
        entry.set("checksumCrc32", JsonModel::number(below(1000)));
    }
    return entry;
}

void RandomDescriptions::addFlaw(JsonModel& entry) {
    JsonModel* object = &entry;
    JsonModel* const boards = entry.find("boards");
    if (boards != nullptr && !boards->items.empty() && oneIn(2)) {
        object = &boards->items[below(boards->items.size())];
    }
    if (oneIn(20)) {
        *object = anyValue(1);
        return;
    }
    const std::string_view key = entryKeys[below(entryKeys.size())];
    if (object->kind != JsonModel::Kind::object || oneIn(5)) {
        object->remove(key);
        return;
    }
    object->set(key, oneIn(2) ? anyValue(2) : valueFor(key));
}

JsonModel RandomDescriptions::entry() {
    JsonModel entry = goodEntry();
    for (std::size_t flaws = below(4); flaws > 0; --flaws) {
        addFlaw(entry);
    }
    return entry;
}

JsonModel RandomDescriptions::description(std::size_t entries) {
    JsonModel files = JsonModel::array({});
    for (std::size_t count = below(entries + 1); count > 0; --count) {
        files.items.push_back(entry());
    }
    JsonModel info = JsonModel::object({{"formatVersion", JsonModel::text("1.0")},
                                        {"archiveVersion", JsonModel::text("23.2")},
                                        {"productName", JsonModel::text("product")},
                                        {"archiveVariant", JsonModel::text("variant")},
                                        {"archiveName", JsonModel::text("name")}});
    return JsonModel::object({{"info", std::move(info)}, {"files", std::move(files)}});
}

/// A value below `value`, or itself.
JsonModel& RandomDescriptions::anyNode(JsonModel& value) {
    return value.items.empty() || oneIn(4) ? value : anyNode(value.items[below(value.items.size())]);
}

void RandomDescriptions::mutate(JsonModel& value) {
    JsonModel& node = anyNode(value);
    switch (below(5)) {
    case 0:
        node = anyValue(3);
        break;
    case 1:
        if (!node.items.empty()) {
            node.removeItem(below(node.items.size()));
        }
        break;
    case 2:
        if (node.kind == JsonModel::Kind::object) {
            // A key that is there already is then given twice.
            node.addMember(anyKey(), anyValue(3));
        } else if (node.kind == JsonModel::Kind::array) {
            node.items.push_back(node.items.empty() ? anyValue(3) : JsonModel(node.items[below(node.items.size())]));
        }
        break;
    case 3: {
        const JsonModel copy = anyNode(value);
        node = copy;
        break;
    }
    default:
        node = JsonModel::array({JsonModel(node)});
        break;
    }
}

void RandomDescriptions::scramble(std::string& text) {
    static constexpr std::string_view bytes = "{}[]\",:0-e.\\u\x01\xC3\xFF x";
    for (std::size_t count = 1 + below(3); count > 0 && !text.empty(); --count) {
        const std::size_t place = below(text.size());
        const char byte = bytes[below(bytes.size())];
        switch (below(3)) {
        case 0:
            text[place] = byte;
            break;
        case 1:
            text.erase(place, 1 + below(4));
            break;
        default:
            text.insert(place, 1, byte);
            break;
        }
    }
}
