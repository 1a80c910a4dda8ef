#pragma once

#include "KeptMessages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

/// All kept messages as the bytes of the narrow texts in them; a wider character is a test failure.
inline std::string messageBytes() {
    std::string result;
    for (const wchar_t character : KeptMessages::text()) {
        EXPECT_LE(static_cast<std::uint32_t>(character), 0xFFU);
        result += static_cast<char>(static_cast<unsigned char>(character));
    }
    return result;
}
