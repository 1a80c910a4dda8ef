#pragma once

#include "CallFailure.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

// Records that grow: each side knows as many fields as it was built with.

/// The size of the first version of a record, which no client falls below.
template <typename Record>
inline constexpr std::uint32_t firstSize = sizeof(Record);

/// The record that a client has given, with the fields that he does not know 0. Throws KvCCallFailure.
template <typename Record>
[[nodiscard]] Record recordFrom(const Record* given) {
    if (given == nullptr) {
        throw KvCCallFailure(KVR_ERROR_ARGUMENT, "the record is null");
    }
    std::uint32_t size = 0;
    std::memcpy(&size, given, sizeof(size));
    if (size < firstSize<Record>) {
        throw KvCCallFailure(KVR_ERROR_VERSION, "the record is smaller than its first version");
    }
    Record record{};
    std::memcpy(&record, given, std::min<std::size_t>(size, sizeof(Record)));
    return record;
}

/// Fills the fields that the client knows. Throws KvCCallFailure.
template <typename Record>
void fill(Record* out, Record record) {
    record.size = recordFrom(out).size;
    std::memcpy(out, &record, std::min<std::size_t>(record.size, sizeof(Record)));
}

/// Gives an object to a client who may not want it.
template <typename Value>
void giveIfWanted(Value* out, Value value) {
    if (out != nullptr) {
        *out = value;
    }
}

/// Throws KvCCallFailure if a client has no room for a result.
void requireOut(const void* out);
/// Throws KvCCallFailure if the index is past the end.
void requireIndex(std::size_t index, std::size_t count);
/// The item of a list. Throws KvCCallFailure.
template <typename List>
[[nodiscard]] auto& itemOf(List& list, std::uint32_t index) {
    requireIndex(index, list.size());
    return list[index];
}

/// The text that a client has given; null is empty.
[[nodiscard]] std::string textOf(const char* given);
/// The path that he has given. Throws KvCCallFailure unless it is UTF-8.
[[nodiscard]] std::wstring pathOf(const char* given);
