#pragma once

#include "EntryProperties.h"
#include "KvNJson.h"

#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// A value of an element, or one that an entry allows for it: none, a text or a number.
using KvTComparedValue = std::variant<std::monostate, std::string_view, std::uint64_t>;

/// The value that stands for a property that an entry or an element does not have.
enum class KvEAbsentValue : std::uint8_t { none, zero };

/// The values that an entry allows for one property of boards and elements. Looks into the entry's description.
class KvCAllowedValues {
public:
    /// Allows `absentValue`.
    explicit KvCAllowedValues(KvEAbsentValue absentValue) : absentValue_(absentValue) {}
    /// Allows the value that the description writes, or each item of it if it is an array; `absentValue` if it writes
    /// none. `isShared`: see isShared().
    KvCAllowedValues(KvNJson::jsonView written, bool isShared, KvEAbsentValue absentValue)
        : written_(written), isShared_(isShared), absentValue_(absentValue) {}

    /// Number of the allowed values, repeated ones included.
    [[nodiscard]] std::size_t size() const { return written_.is_array() ? written_.size() : 1; }
    /// Allowed value number `index`, which is below size(); nothing if no element can have it.
    [[nodiscard]] std::optional<KvTComparedValue> at(std::size_t index) const;

    /// The value as it is written; a look at nothing if it is not.
    [[nodiscard]] KvNJson::jsonView written() const { return written_; }
    /// The values are those of the entry itself, which its selections share.
    [[nodiscard]] bool isShared() const { return isShared_; }

private:
    KvNJson::jsonView written_;
    bool isShared_ = true;
    KvEAbsentValue absentValue_;
};

/// The place that an entry, or an element of its "boards", names: an update element or a file of the target.
struct KvTEntryAddress {
    std::optional<std::uint32_t> id;
    std::optional<std::string_view> targetPath;

    [[nodiscard]] bool isGiven() const { return id || targetPath; }
};

/// The values of an entry for boards of some types: those of an element of its "boards", completed by those of the
/// entry, or those of the entry alone. Looks into the entry's description.
struct KvTEntrySelection {
    /// The types of the boards for which the selection decides. A type of an earlier selection is left out: of each
    /// board type only the first one counts. Copies: planning asks every selection for them, and the description is far
    /// away in memory.
    boost::container::small_vector<std::string, 1> boardTypes;
    /// All board types, as they are written: a text or an array.
    KvNJson::jsonView writtenBoardTypes;
    KvCAllowedValues boardVariant{KvEAbsentValue::none};
    KvCAllowedValues boardId{KvEAbsentValue::zero};
    KvCAllowedValues hwCompatibilityId{KvEAbsentValue::zero};
    KvCAllowedValues swCompatibilityId{KvEAbsentValue::zero};
    KvTEntryAddress address;
    /// The address is the one of the entry itself.
    bool isAddressShared = true;
};

/// The selections of an entry. A single one, which most entries have, is part of the entry's record.
using KvCEntrySelections = boost::container::small_vector<KvTEntrySelection, 1>;

/// The address that an entry, or an element of its "boards", has itself.
[[nodiscard]] KvTEntryAddress addressOf(const KvCEntryProperties& properties);

/// The selections of a sound entry in their order: one for each element of its "boards", or one for the entry. They
/// look into the same object as `entry`.
[[nodiscard]] KvCEntrySelections selectionsOf(const KvCEntryProperties& entry);
