#pragma once

#include "KvCInventoryAddress.h"
#include "UpdateBehaviour.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// A parameter as a description gives it.
class KvCInventoryParameter {
public:
    using Value = std::variant<std::string, std::uint64_t>;

    /// `path`: see keyOf().
    KvCInventoryParameter(std::uint32_t key, Value value) : key_(key), value_(std::move(value)) {}

    /// The parameter path as one number, by which parameters are sorted; nothing for what is no path of one or two
    /// components at instance 1.
    [[nodiscard]] static std::optional<std::uint32_t> keyOf(const KvCInventoryAddress& path) noexcept;
    /// The same of two identifiers of 16 bits; `group` may be 0, for none.
    [[nodiscard]] static constexpr std::uint32_t keyOf(std::uint32_t group, std::uint32_t parameter) noexcept {
        return (group << 16U) | parameter;
    }

    [[nodiscard]] std::uint32_t key() const noexcept { return key_; }
    [[nodiscard]] const Value& value() const noexcept { return value_; }
    /// Null when the value is a number.
    [[nodiscard]] const std::string* text() const noexcept { return std::get_if<std::string>(&value_); }
    /// The value when it is a number of 32 bits.
    [[nodiscard]] std::optional<std::uint32_t> number32() const noexcept;

private:
    std::uint32_t key_;
    Value value_;
};

/// An item of an inventory as a description gives it, with everything below it. Never changed once it is read.
class ItemDescription {
public:
    /// `parent` is null for the root, whose address is ROOT[1] whatever its identifier.
    ItemDescription(const ItemDescription* parent, std::uint32_t identifier, std::uint32_t instance);

    [[nodiscard]] const ItemDescription* parent() const noexcept { return parent_; }
    /// Identifier and instance.
    [[nodiscard]] const KvCInventoryAddress& id() const noexcept { return id_; }
    /// Address from below the root.
    [[nodiscard]] const KvCInventoryAddress& address() const noexcept { return address_; }
    [[nodiscard]] const std::vector<std::unique_ptr<ItemDescription>>& items() const noexcept { return items_; }
    /// True of an UPDATE_ELEMENT or a FILESYSTEM_ELEMENT.
    [[nodiscard]] bool isElement() const noexcept;
    /// True when the description says how an update behaves.
    [[nodiscard]] bool hasUpdate() const noexcept { return update_ != nullptr; }
    /// How an update of this element behaves.
    [[nodiscard]] const UpdateBehaviour& update() const noexcept;

    /// Position of the child with that identity; nothing when there is none.
    [[nodiscard]] std::optional<std::size_t> childIndex(const KvCInventoryAddress::Component& identity) const noexcept;
    /// All parameters, in no order that means anything.
    [[nodiscard]] const std::vector<KvCInventoryParameter>& parameters() const noexcept { return parameters_; }
    /// The parameter at `path`; null when there is none.
    [[nodiscard]] const KvCInventoryParameter* parameter(const KvCInventoryAddress& path) const noexcept;

    void setParameters(std::vector<KvCInventoryParameter> parameters);
    void setUpdate(std::unique_ptr<const UpdateBehaviour> update) { update_ = std::move(update); }
    /// Sets the children. The result is the position of one whose identity another one before it has already; then they
    /// must not be used.
    [[nodiscard]] std::optional<std::size_t> setItems(std::vector<std::unique_ptr<ItemDescription>> items);

private:
    [[nodiscard]] const KvCInventoryAddress::Component& identity() const noexcept {
        return id_.getComponents().front();
    }

    const ItemDescription* parent_;
    KvCInventoryAddress id_;
    KvCInventoryAddress address_;
    std::vector<KvCInventoryParameter> parameters_;
    std::vector<std::unique_ptr<ItemDescription>> items_;
    /// Positions in `items_`, in the order of the items' identities.
    std::vector<std::uint32_t> byIdentity_;
    std::unique_ptr<const UpdateBehaviour> update_;
};
