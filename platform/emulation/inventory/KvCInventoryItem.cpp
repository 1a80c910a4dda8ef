#include "KvCInventoryItem.h"

#include "Call.h"
#include "InventoryTree.h"
#include "ItemAddressText.h"
#include "KvNInventoryIDs.h"

#include <cstdint>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace {

using Value = KvCInventoryParameter::Value;

/// What an installation has set instead of the described value of the parameter at `path`.
std::optional<Value> installedValue(const InstalledValues& installed, const KvCInventoryAddress& path) {
    using namespace KvNInventoryIDs;
    if (installed.version && path == VERSION) {
        return *installed.version;
    }
    if (installed.checksum && path == CHECKSUM_CRC32) {
        return std::uint64_t(*installed.checksum);
    }
    if (installed.isActivated && (path == VALID || path == ACTIVE)) {
        return std::uint64_t(1);
    }
    return std::nullopt;
}

/// True when `value` has the type and range of `result`, which then holds it.
template <class Number>
bool convert(const Value& value, Number& result) {
    const std::uint64_t* const number = std::get_if<std::uint64_t>(&value);
    if (number == nullptr || *number > std::numeric_limits<Number>::max()) {
        return false;
    }
    result = static_cast<Number>(*number);
    return true;
}

bool convert(const Value& value, KvCString& result) {
    const std::string* const text = std::get_if<std::string>(&value);
    if (text != nullptr) {
        result = KvCString(*text);
    }
    return text != nullptr;
}

bool convert(const Value& value, KvCVersion& result) {
    const std::string* const text = std::get_if<std::string>(&value);
    if (text != nullptr) {
        result = KvCVersion(text->c_str());
    }
    return text != nullptr;
}

std::string parameterName(const KvCInventoryItem::Impl& item, const KvCInventoryAddress& path) {
    return itemAddressText(path) + " of " + itemAddressText(item.description->address());
}

template <class Result>
std::int64_t readValue(Call& call, const KvCInventoryItem::Impl& item, const KvCInventoryAddress& path,
                       Result& result) {
    const KvCInventoryParameter* const parameter = item.description->parameter(path);
    if (parameter == nullptr) {
        return call.fail({EmulationErrors::valueUnusable, "There is no parameter " + parameterName(item, path) + "."});
    }
    const auto installed = item.installed != nullptr ? installedValue(*item.installed, path) : std::nullopt;
    if (!convert(installed ? *installed : parameter->value(), result)) {
        return call.fail(
            {EmulationErrors::valueUnusable, "The value of " + parameterName(item, path) + " is of another type."});
    }
    return 0;
}

template <class Result>
void getValueOf(const KvCInventoryItem::Impl& item, KvCErrorListPool& errors, const KvCInventoryAddress& path,
                Result& result) {
    Call call(Operation::getValue, errors);
    call.bindTo(item.source->target);
    call.setAddress(item.description->address());
    call.run([&] { return readValue(call, item, path, result); });
}

} // namespace

KvCInventoryItem::KvCInventoryItem(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

KvCInventoryItem::~KvCInventoryItem() {
    if (impl_ != nullptr && impl_->ownedSource != nullptr && impl_->ownedSource->target != nullptr) {
        const std::lock_guard guard(EmulationService::instance().mutex());
        scannedTrees().erase(this);
    }
}

const KvCInventoryAddress& KvCInventoryItem::getID() const {
    return impl_->description->id();
}

const KvCInventoryAddress& KvCInventoryItem::getAddress() const {
    return impl_->description->address();
}

KvCInventoryItem* KvCInventoryItem::getParent() const {
    return impl_->parent;
}

KvCInventoryItem* KvCInventoryItem::getFirstSubItem() const {
    return impl_->items.empty() ? nullptr : impl_->items.front().get();
}

KvCInventoryItem* KvCInventoryItem::getNext() const {
    return impl_->next;
}

KvCInventoryItem* KvCInventoryItem::getItem(const KvCInventoryAddress& below) const {
    const Impl* item = impl_.get();
    KvCInventoryItem* found = nullptr;
    for (const KvCInventoryAddress::Component& component : below.getComponents()) {
        const auto index = item->description->childIndex(component);
        if (!index) {
            return nullptr;
        }
        found = item->items[*index].get();
        item = found->impl_.get();
    }
    return found;
}

const KvCInventoryParameter* KvCInventoryItem::getParameter(const KvCInventoryAddress& path) const {
    return impl_->description->parameter(path);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint32_t& value) const {
    getValueOf(*impl_, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, std::uint8_t& value) const {
    getValueOf(*impl_, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCString& value) const {
    getValueOf(*impl_, errors, path, value);
}

void KvCInventoryItem::getValue(KvCErrorListPool& errors, const KvCInventoryAddress& path, KvCVersion& value) const {
    getValueOf(*impl_, errors, path, value);
}
