#include "Call.h"

#include "Ledger.h"
#include "Trace.h"

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
        line_->set("call", traits_.name);
    }
}

void Call::setAddress(const KvCInventoryAddress& address) {
    subject_.address = &address;
    if (line_) {
        line_->set("address", address.toString());
    }
}

void Call::setId(std::uint32_t id) {
    subject_.id = id;
    addField("id", id);
}

void Call::addField(std::string_view name, std::string_view text) {
    if (line_) {
        line_->set(name, text);
    }
}

void Call::addField(std::string_view name, std::uint32_t number) {
    if (line_) {
        line_->set(name, number);
    }
}

std::int64_t Call::fail(const Failure& failure) {
    entries_.push_back(emulationError(failure.code, failure.text));
    return traits_.failed;
}

std::optional<std::int64_t> Call::decide() {
    if (auto effect = meetFaults()) {
        ++Ledger::instance().faultsMet;
        entries_ = std::move(effect->errors);
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
    if (line_) {
        trace(result);
    }
    lock_.unlock();
    for (KvTErrorEntry& entry : entries_) {
        errors_.addError(std::move(entry));
    }
    return result;
}

void Call::trace(std::int64_t result) {
    const bool hasFailed = traits_.failed < 0 ? result < 0 : result != 0;
    if (hasFailed || !entries_.empty()) {
        line_->set("status", numberOf(result));
        line_->set("errors", static_cast<std::uint32_t>(entries_.size()));
    }
    Trace::append(*line_);
}
