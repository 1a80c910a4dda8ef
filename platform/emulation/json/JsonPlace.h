#pragma once

#include "KvNJson.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

/// What a reader found wrong in a JSON document: the first place that it refused.
struct JsonRefusal {
    /// "$.inventory.items[2].id"
    std::string path;
    std::string reason;
};

/// A value of a JSON document and how it is reached from the root. A place costs nothing until it is refused; it refers
/// to the place above it, which must outlive it.
class JsonPlace {
public:
    /// The root of a document; `refusal` outlives every place below.
    JsonPlace(KvNJson::jsonView root, JsonRefusal& refusal) noexcept : value_(root), refusal_(&refusal) {}

    [[nodiscard]] KvNJson::jsonView value() const noexcept { return value_; }
    /// Member `index` of this object.
    [[nodiscard]] JsonPlace member(std::size_t index) const noexcept;
    /// The member `key` of this object, which need not exist.
    [[nodiscard]] JsonPlace member(std::string_view key) const noexcept;
    /// Item `index` of this array.
    [[nodiscard]] JsonPlace item(std::size_t index) const noexcept;

    /// Records why this value is refused, unless a refusal is recorded already; returns false.
    [[nodiscard]] bool refuse(std::string reason) const;

private:
    JsonPlace(const JsonPlace& above, KvNJson::jsonView value, std::string_view key, std::size_t index) noexcept
        : value_(value), refusal_(above.refusal_), above_(&above), key_(key), index_(index) {}
    [[nodiscard]] std::string path() const;

    static constexpr std::size_t isMember = std::numeric_limits<std::size_t>::max();
    KvNJson::jsonView value_;
    JsonRefusal* refusal_;
    const JsonPlace* above_ = nullptr;
    std::string_view key_;
    std::size_t index_ = isMember;
};

/// Readers of single values: each returns false, with the refusal recorded, when the value is not what it asks for.
namespace JsonValues {

/// `text` in quotes, control characters escaped, and cut when it is long: for messages.
[[nodiscard]] std::string quoted(std::string_view text);

/// The longest text that is read, in bytes of UTF-8.
inline constexpr std::size_t longestText = 4096;

[[nodiscard]] bool requireObject(const JsonPlace& place);
[[nodiscard]] bool requireArray(const JsonPlace& place);
/// A text of at most longestText bytes.
[[nodiscard]] bool readText(const JsonPlace& place, std::string& text);
[[nodiscard]] bool readUnsigned(const JsonPlace& place, std::uint64_t lowest, std::uint64_t highest,
                                std::uint64_t& number);
[[nodiscard]] bool readUnsigned32(const JsonPlace& place, std::uint32_t& number);
/// A whole number, written without fraction and exponent when it is not negative.
[[nodiscard]] bool readInteger(const JsonPlace& place, std::int64_t lowest, std::int64_t highest, std::int64_t& number);

} // namespace JsonValues

/// How the member `key` of an object is read into a record.
template <class Record>
struct JsonMemberRule {
    std::string_view key;
    bool (*read)(const JsonPlace& place, Record& record);
};

/// Reads the members of an object in the order in which they are written. A key without a rule is refused, except
/// "comment".
template <class Record, std::size_t count>
[[nodiscard]] bool readMembers(const JsonPlace& place, const std::array<JsonMemberRule<Record>, count>& rules,
                               Record& record) {
    if (!JsonValues::requireObject(place)) {
        return false;
    }
    for (std::size_t index = 0; index < place.value().size(); ++index) {
        const JsonPlace member = place.member(index);
        const std::string_view key = place.value().key(index);
        const auto rule = std::find_if(rules.begin(), rules.end(),
                                       [key](const JsonMemberRule<Record>& candidate) { return candidate.key == key; });
        if (rule != rules.end()) {
            if (!rule->read(member, record)) {
                return false;
            }
        } else if (key != "comment") {
            std::string known;
            for (const JsonMemberRule<Record>& candidate : rules) {
                known += known.empty() ? "" : ", ";
                known += candidate.key;
            }
            return member.refuse("unknown key; expected one of " + known);
        }
    }
    return true;
}

/// Reads every item of an array.
template <class Read>
[[nodiscard]] bool readItems(const JsonPlace& place, Read readItem) {
    if (!JsonValues::requireArray(place)) {
        return false;
    }
    for (std::size_t index = 0; index < place.value().size(); ++index) {
        if (!readItem(place.item(index))) {
            return false;
        }
    }
    return true;
}
