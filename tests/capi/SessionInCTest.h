#pragma once

#include "RackTest.h"
#include "kvreflash.h"

#include <functional>
#include <string>
#include <vector>

/// A record with its size.
template <typename Record>
[[nodiscard]] Record sized() {
    Record record{};
    record.size = sizeof(Record);
    return record;
}

/// A session of the interface in C with an emulated target: two elements of the processor board in phases of their own,
/// and a file that is written to the target.
class SessionInCTest : public RackTest {
protected:
    SessionInCTest();
    void close() override;

    /// Makes the session, with an event function that records.
    void create();
    /// Makes and prepares it.
    [[nodiscard]] std::int32_t prepare();
    /// Makes, prepares and runs it, and frees it.
    [[nodiscard]] std::int32_t update();

    [[nodiscard]] kvr_plan plan() const;
    [[nodiscard]] kvr_element element(std::uint32_t index) const;
    [[nodiscard]] kvr_outcome outcome() const;
    [[nodiscard]] kvr_element_result result(std::uint32_t index) const;
    [[nodiscard]] std::string document(std::uint32_t kind) const;

    kvr_session_options options = sized<kvr_session_options>();
    kvr_session* session = nullptr;
    /// Each event but messages: "KIND VALUE SUCCEEDED".
    std::vector<std::string> events;
    std::string messages;
    /// Called at each event, before it is recorded.
    std::function<void(const kvr_event& event)> onEvent;

private:
    std::string archiveFolder_;
};
