#include "JsonModel.h"

#include <algorithm>
#include <cstddef>

JsonModel JsonModel::number(std::uint64_t value) {
    return {Kind::unsignedNumber, std::to_string(value), {}, {}};
}

JsonModel JsonModel::otherNumber(std::string_view text) {
    return {Kind::otherNumber, std::string(text), {}, {}};
}

JsonModel JsonModel::boolean(bool value) {
    return {Kind::boolean, value ? "true" : "false", {}, {}};
}

JsonModel JsonModel::text(std::string_view content) {
    return {Kind::text, std::string(content), {}, {}};
}

JsonModel JsonModel::array(std::vector<JsonModel> items) {
    return {Kind::array, {}, std::move(items), {}};
}

JsonModel JsonModel::object(const std::vector<std::pair<std::string, JsonModel>>& members) {
    JsonModel result{Kind::object, {}, {}, {}};
    for (const auto& [key, value] : members) {
        result.addMember(key, value);
    }
    return result;
}

const JsonModel* JsonModel::find(std::string_view key) const {
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found != keys.end() ? &items[static_cast<std::size_t>(found - keys.begin())] : nullptr;
}

JsonModel* JsonModel::find(std::string_view key) {
    return const_cast<JsonModel*>(std::as_const(*this).find(key));
}

void JsonModel::set(std::string_view key, JsonModel value) {
    if (JsonModel* const existing = find(key); existing != nullptr) {
        *existing = std::move(value);
    } else {
        addMember(key, std::move(value));
    }
}

void JsonModel::remove(std::string_view key) {
    if (const JsonModel* const existing = find(key); existing != nullptr) {
        removeItem(static_cast<std::size_t>(existing - items.data()));
    }
}

void JsonModel::addMember(std::string_view key, JsonModel value) {
    keys.emplace_back(key);
    items.push_back(std::move(value));
}

void JsonModel::removeItem(std::size_t index) {
    const auto offset = static_cast<std::ptrdiff_t>(index);
    items.erase(items.begin() + offset);
    if (kind == Kind::object) {
        keys.erase(keys.begin() + offset);
    }
}

std::string JsonModel::write() const {
    if (kind == Kind::null) {
        return "null";
    }
    const bool isObject = kind == Kind::object;
    if (!isObject && kind != Kind::array) {
        const std::string quote = kind == Kind::text ? "\"" : "";
        return quote + scalar + quote;
    }
    std::string result(1, isObject ? '{' : '[');
    for (std::size_t index = 0; index < items.size(); ++index) {
        result.append(index == 0 ? "" : ", ");
        if (isObject) {
            result.append("\"").append(keys[index]).append("\": ");
        }
        result.append(items[index].write());
    }
    return result.append(1, isObject ? '}' : ']');
}
