#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A JSON value as the tests see it, independent of the JSON library: made by a test and written as text.
struct JsonModel {
    enum class Kind { null, boolean, unsignedNumber, otherNumber, text, array, object };
    using Member = std::pair<std::string, JsonModel>;

    Kind kind = Kind::null;
    /// JSON text of a boolean or a number; the content of a text, which needs no escapes.
    std::string scalar;
    std::vector<JsonModel> items;
    std::vector<Member> members;

    static JsonModel number(std::uint64_t value) { return {Kind::unsignedNumber, std::to_string(value), {}, {}}; }
    static JsonModel otherNumber(std::string_view text) { return {Kind::otherNumber, std::string(text), {}, {}}; }
    static JsonModel boolean(bool value) { return {Kind::boolean, value ? "true" : "false", {}, {}}; }
    static JsonModel text(std::string_view content) { return {Kind::text, std::string(content), {}, {}}; }
    static JsonModel array(std::vector<JsonModel> items) { return {Kind::array, {}, std::move(items), {}}; }
    static JsonModel object(std::vector<Member> members) { return {Kind::object, {}, {}, std::move(members)}; }

    /// The member `key` of an object; null when there is none.
    [[nodiscard]] const JsonModel* find(std::string_view key) const;
    [[nodiscard]] JsonModel* find(std::string_view key);
    /// Replaces or adds a member of an object.
    void set(std::string_view key, JsonModel value);
    void remove(std::string_view key);

    [[nodiscard]] std::string write() const;
};
