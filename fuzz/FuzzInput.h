#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Takes the bytes of an input apart from front to back. Behind the end there are zeros and empty texts, so that every
/// input means something.
class FuzzInput {
public:
    /// `data` must outlive this object and the texts that are taken from it.
    FuzzInput(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

    [[nodiscard]] bool isEmpty() const { return rest_.empty(); }

    std::uint8_t takeByte() {
        const std::string_view byte = takeBytes(1);
        return byte.empty() ? std::uint8_t(0) : static_cast<std::uint8_t>(byte.front());
    }
    /// Four bytes, most significant first.
    std::uint32_t takeNumber() {
        std::uint32_t number = 0;
        for (int index = 0; index < 4; ++index) {
            number = number << 8U | takeByte();
        }
        return number;
    }
    /// At most `count` bytes.
    std::string_view takeBytes(std::size_t count) {
        const std::string_view bytes = rest_.substr(0, count);
        rest_.remove_prefix(bytes.size());
        return bytes;
    }
    /// The bytes before the next zero byte, or all of them; the zero byte is skipped.
    std::string_view takeText() {
        const std::string_view text = rest_.substr(0, rest_.find('\0'));
        rest_.remove_prefix(std::min(text.size() + 1, rest_.size()));
        return text;
    }
    std::string_view takeRest() { return takeBytes(rest_.size()); }

private:
    std::string_view rest_;
};
