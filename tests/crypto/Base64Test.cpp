#include "Base64.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::uint8_t> bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(Base64, IsThatOfRfc4648) {
    const std::pair<std::string_view, std::string_view> rows[] = {{"", ""},
                                                                  {"f", "Zg=="},
                                                                  {"fo", "Zm8="},
                                                                  {"foo", "Zm9v"},
                                                                  {"foob", "Zm9vYg=="},
                                                                  {"fooba", "Zm9vYmE="},
                                                                  {"foobar", "Zm9vYmFy"},
                                                                  {"\xFF\xFE\xFB", "//77"}};
    for (const auto& [text, base64] : rows) {
        EXPECT_EQ(base64Of(bytes(text)), base64);
        EXPECT_EQ(bytesOfBase64(base64), bytes(text));
    }
}

TEST(Base64, CanBeWrittenInOneWayOnly) {
    for (const std::string_view text : {"Zg", "Zg=", "Zg===", "Zh==", "Zm9=", "Zm9v=", "=", "====", "Z", "Zm9vY",
                                        "Zm 9v", "Zm9v\n", "Zm9-", "Zm9_", "Z=g=", "Zg==Zg=="}) {
        EXPECT_EQ(bytesOfBase64(text), std::nullopt) << text;
    }
}

TEST(Base64, HoldsAllBytes) {
    std::vector<std::uint8_t> all;
    for (unsigned byte = 0; byte < 256; ++byte) {
        all.push_back(static_cast<std::uint8_t>(byte));
        EXPECT_EQ(bytesOfBase64(base64Of(all)), all);
    }
}

} // namespace
