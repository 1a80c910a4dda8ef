#pragma once

#include "KvCErrorManager.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Stands in for the host side of the device access service in the programs that are linked with it: keeps every call
/// with its arguments, and answers as it is told, the ways included in which a service should not answer.
class HostServiceStandIn {
public:
    static HostServiceStandIn& instance();

    /// How a call is answered. What is not said is as of a service that finds one device.
    struct Answer {
        std::int64_t status = 0;
        bool addsError = false;
        /// Of getDeviceList: the number of devices that it tells.
        std::optional<std::int32_t> count = {};
        /// Of an operation that creates a handle: leaves it as it was.
        bool leavesHandle = false;
    };
    /// How call number `occurrence`, from 1, of an operation is answered; 0: every call that has no answer of its own.
    /// Operations are named without their prefix.
    void answer(std::string_view operation, const Answer& answer, std::uint32_t occurrence = 1);
    /// Forgets answers, calls and handles.
    void forget();

    /// The calls in order, each with what it was given; a handle is shown as its kind and number, from 1.
    [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }
    /// The names of the operations alone.
    [[nodiscard]] std::vector<std::string> operations() const;
    /// The error list that each call was given.
    [[nodiscard]] const std::vector<const KvCErrorListPool*>& errorLists() const { return errorLists_; }
    void forgetCalls();
    /// What was created and not given back, error lists included.
    [[nodiscard]] const std::set<std::string>& held() const { return held_; }
    /// From now on there is no memory for an error list.
    void exhaustErrorLists() { errorListsExhausted_ = true; }

    // For the operations that this stands in for.

    /// Keeps a call and adds its error.
    Answer take(std::string_view operation, const std::string& arguments, KvCErrorListPool& errors);
    template <class Handle>
    void create(const Answer& answer, std::string_view kind, Handle& handle) {
        if (!answer.leavesHandle) {
            char* const slot = &slots_.emplace_back();
            hold(slot, kind);
            handle = reinterpret_cast<Handle>(slot);
        }
    }
    void hold(const void* handle, std::string_view kind);
    void giveBack(const void* handle);
    [[nodiscard]] std::string nameOf(const void* handle) const;
    [[nodiscard]] bool errorListsExhausted() const { return errorListsExhausted_; }

private:
    HostServiceStandIn() = default;

    std::map<std::pair<std::string, std::uint32_t>, Answer, std::less<>> answers_;
    std::map<std::string, std::uint32_t, std::less<>> counts_;
    std::vector<std::string> calls_;
    std::vector<const KvCErrorListPool*> errorLists_;
    /// The addresses of its items are the handles.
    std::deque<char> slots_;
    std::map<const void*, std::string> names_;
    std::map<std::string, std::uint32_t, std::less<>> kinds_;
    std::set<std::string> held_;
    bool errorListsExhausted_ = false;
};
