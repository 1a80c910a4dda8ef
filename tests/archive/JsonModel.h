#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A JSON value as the tests see it, independent of the JSON library: made by a test and written as text.
struct JsonModel {
    enum class Kind { null, boolean, unsignedNumber, otherNumber, text, array, object };

    Kind kind = Kind::null;
    /// JSON text of a boolean or a number; the content of a text, which needs no escapes.
    std::string scalar;
    /// Items of an array, or values of the members of an object.
    std::vector<JsonModel> items;
    /// Keys of the members of an object.
    std::vector<std::string> keys;

    static JsonModel number(std::uint64_t value);
    static JsonModel otherNumber(std::string_view text);
    static JsonModel boolean(bool value);
    static JsonModel text(std::string_view content);
    static JsonModel array(std::vector<JsonModel> items);
    static JsonModel object(const std::vector<std::pair<std::string, JsonModel>>& members);

    /// The member `key` of an object; null when there is none.
    [[nodiscard]] const JsonModel* find(std::string_view key) const;
    [[nodiscard]] JsonModel* find(std::string_view key);
    /// Replaces or adds a member of an object.
    void set(std::string_view key, JsonModel value);
    void remove(std::string_view key);
    /// Adds a member to an object even when the key is there already.
    void addMember(std::string_view key, JsonModel value);
    /// Removes item or member `index`.
    void removeItem(std::size_t index);

    [[nodiscard]] std::string write() const;
};
