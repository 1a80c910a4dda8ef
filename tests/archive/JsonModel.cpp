#include "JsonModel.h"

#include <algorithm>

const JsonModel* JsonModel::find(std::string_view key) const {
    const auto member = std::find_if(members.begin(), members.end(), [&](const Member& m) { return m.first == key; });
    return member != members.end() ? &member->second : nullptr;
}

JsonModel* JsonModel::find(std::string_view key) {
    return const_cast<JsonModel*>(std::as_const(*this).find(key));
}

void JsonModel::set(std::string_view key, JsonModel value) {
    if (JsonModel* const existing = find(key); existing != nullptr) {
        *existing = std::move(value);
    } else {
        members.emplace_back(key, std::move(value));
    }
}

void JsonModel::remove(std::string_view key) {
    std::erase_if(members, [&](const Member& member) { return member.first == key; });
}

std::string JsonModel::write() const {
    std::string result;
    switch (kind) {
    case Kind::null:
        return "null";
    case Kind::boolean:
    case Kind::unsignedNumber:
    case Kind::otherNumber:
        return scalar;
    case Kind::text:
        return result.append("\"").append(scalar).append("\"");
    case Kind::array:
        for (const JsonModel& item : items) {
            result.append(result.empty() ? "" : ", ").append(item.write());
        }
        return result.insert(0, "[").append("]");
    case Kind::object:
        for (const auto& [key, value] : members) {
            result.append(result.empty() ? "\"" : ", \"").append(key).append("\": ").append(value.write());
        }
        return result.insert(0, "{").append("}");
    }
    return result;
}
