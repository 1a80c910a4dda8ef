#pragma once

#include "EmulationService.h"
#include "Faults.h"
#include "KvNJson.h"
#include "Operation.h"
#include "Outcome.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

/// One call of an imported operation: has the service to itself from its construction to the end of run(), lets the
/// faults and the service's status decide before the operation does, and collects what goes into the caller's error
/// list and into the trace. The error list is touched only after the service is free again: another thread may hold
/// the list and wait for the service.
///
/// Exhausted memory makes the call fail like anything else; nothing here throws std::bad_alloc. A line of the trace for
/// which there is no memory is lost.
class Call {
public:
    Call(Operation operation, KvCErrorListPool& errors);

    /// The call concerns `target` and meets its faults; without one, those of all served targets.
    void bindTo(std::shared_ptr<EmulatedTarget> target) { target_ = std::move(target); }
    /// The call's address, which outlives the call; for faults and trace.
    void setAddress(const KvCInventoryAddress& address);
    /// The call's element or parameter number; for faults and trace.
    void setId(std::uint32_t id);
    /// A field of the trace.
    void addField(std::string_view name, std::string_view text);
    void addField(std::string_view name, std::wstring_view text);
    void addField(std::string_view name, std::uint32_t number);

    /// Makes a step that comes before run(); when memory is exhausted in it, run() does nothing and the call fails.
    template <class Step>
    void attempt(Step step) {
        try {
            step();
        } catch (const std::bad_alloc&) {
            isMemoryExhausted_ = true;
        }
    }

    [[nodiscard]] EmulationService& service() const noexcept { return EmulationService::instance(); }

    /// Makes the call: `operation` runs unless a fault or the service's status decides. The result of the call.
    template <class Body>
    std::int64_t run(Body operation) {
        return run(operation, [] {});
    }
    /// The same; `whenDecided` runs instead of `operation`.
    template <class Body, class Otherwise>
    std::int64_t run(Body operation, Otherwise whenDecided) {
        std::int64_t result = traits_.failed;
        if (!isMemoryExhausted_) {
            attempt([&] {
                const std::optional<std::int64_t> decided = decide();
                if (decided) {
                    whenDecided();
                }
                result = decided ? *decided : operation();
            });
        }
        return end(result);
    }

    /// Adds an error; the result of a failed call.
    std::int64_t fail(const Failure& failure);
    /// The same when there is a failure, otherwise 0.
    std::int64_t conclude(const Outcome& outcome) { return outcome ? fail(*outcome) : 0; }

private:
    [[nodiscard]] std::optional<std::int64_t> decide();
    [[nodiscard]] std::optional<FaultEffect> meetFaults() const;
    std::int64_t end(std::int64_t result);
    void trace(std::int64_t result);

    /// Hands the line of the trace to `step`, when there is one.
    template <class Step>
    void onLine(Step step) {
        if (line_) {
            try {
                step(*line_);
            } catch (const std::bad_alloc&) {
                line_.reset();
            }
        }
    }

    const OperationTraits& traits_;
    KvCErrorListPool& errors_;
    std::unique_lock<std::recursive_mutex> lock_;
    std::shared_ptr<EmulatedTarget> target_;
    CallSubject subject_;
    /// Only when a trace is wanted.
    std::optional<KvNJson::json> line_;
    std::vector<KvTErrorEntry> entries_;
    /// An error beside the entries.
    bool isMemoryExhausted_ = false;
};
