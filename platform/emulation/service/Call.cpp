#include "Call.h"

#include "Ledger.h"
#include "Trace.h"
#include "WideText.h"

#include <string>
#include <utility>

namespace {

/// JSON values are made of unsigned and of real numbers only.
KvNJson::json numberOf(std::int64_t number) {
    return KvNJson::json::parse(std::to_string(number));
}

} // namespace

Call::Call(Operation operation, KvCErrorListPool& errors)
    : traits_(traitsOf(operation)), errors_(errors),
      lock_(EmulationService::instance().mutex()), subject_{operation, nullptr, std::nullopt} {
    if (traits_.isTraced && Trace::isWanted()) {
        line_ = KvNJson::json::makeObject();
        onLine([this](KvNJson::json& line) { line.set("call", traits_.name); });
    }
}

void Call::setAddress(const KvCInventoryAddress& address) {
    subject_.address = &address;
    onLine([&](KvNJson::json& line) { line.set("address", address.toString()); });
}

void Call::setId(std::uint32_t id) {
    subject_.id = id;
    addField("id", id);
}

void Call::addField(std::string_view name, std::string_view text) {
    onLine([&](KvNJson::json& line) { line.set(name, text); });
}

void Call::addField(std::string_view name, std::wstring_view text) {
    onLine([&](KvNJson::json& line) { line.set(name, std::string_view(utf8OfWide(text))); });
}

void Call::addField(std::string_view name, std::uint32_t number) {
    onLine([&](KvNJson::json& line) { line.set(name, number); });
}

std::int64_t Call::fail(const Failure& failure) {
    entries_.push_back(emulationError(failure.code, failure.text));
    return traits_.failed;
}

std::optional<std::int64_t> Call::decide() {
    if (auto effect = meetFaults()) {
        ++Ledger::instance().faultsMet;
        entries_ = std::move(effect->errors);
        isMemoryExhausted_ = effect->isMemoryExhausted;
        return effect->status;
    }
    const std::int32_t status = traits_.isHostInterface ? service().hostStatus() : 0;
    return status != 0 ? std::optional<std::int64_t>(status) : std::nullopt;
}

std::optional<FaultEffect> Call::meetFaults() const {
    std::optional<FaultEffect> effect;
    if (target_ != nullptr) {
        target_->faults().meet(subject_, effect);
        return effect;
    }
    for (const auto& target : service().targets()) {
        target->faults().meet(subject_, effect);
    }
    return effect;
}

std::int64_t Call::end(std::int64_t result) {
    trace(result);
    lock_.unlock();
    for (KvTErrorEntry& entry : entries_) {
        errors_.addError(std::move(entry));
    }
    if (isMemoryExhausted_) {
        errors_.addError(memoryExhaustedError());
    }
    return result;
}

void Call::trace(std::int64_t result) {
    const auto errorCount = static_cast<std::uint32_t>(entries_.size()) + (isMemoryExhausted_ ? 1 : 0);
    const bool hasFailed = traits_.failed < 0 ? result < 0 : result != 0;
    onLine([&](KvNJson::json& line) {
        if (hasFailed || errorCount > 0) {
            line.set("status", numberOf(result));
            line.set("errors", errorCount);
        }
        Trace::append(line);
    });
}
