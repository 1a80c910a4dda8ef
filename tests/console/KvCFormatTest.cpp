#include "KvCFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

template <typename... Arguments>
std::wstring accepted(KvCFormat<std::type_identity_t<Arguments>...> format, Arguments... /*arguments*/) {
    return format.text();
}

} // namespace

// What does not fit is a compilation that has to fail: see the rows in this folder's CMakeLists.txt.

TEST(CheckedFormat, IsTheTextThatWasGiven) {
    EXPECT_EQ(accepted(L"100%% %hs\n", "x"), L"100%% %hs\n");
    EXPECT_EQ(accepted(L""), L"");
}

TEST(CheckedFormat, TakesEveryConversionOfItsArguments) {
    EXPECT_EQ(accepted(L"%s%hs%u%x%i%d%f", L"", "", 1U, 2U, 3, 4, 5.0), L"%s%hs%u%x%i%d%f");
}

TEST(CheckedFormat, TakesFlagsWidthsAndPrecisions) {
    EXPECT_EQ(accepted(L"%3u%% %-51.51hs\r", 1U, "x"), L"%3u%% %-51.51hs\r");
    EXPECT_EQ(accepted(L"%*s%-*s%*s", 1, L"", 2, L"", 3, L""), L"%*s%-*s%*s");
    EXPECT_EQ(accepted(L"%.*hs|%*.*hs|%-*.3hs", 1, "", 2, 3, "", 4, ""), L"%.*hs|%*.*hs|%-*.3hs");
    EXPECT_EQ(accepted(L"%#x %08x %#010x % 4.3f % d %.f", 1U, 2U, 3U, 4.0, 5, 6.0), L"%#x %08x %#010x % 4.3f % d %.f");
}

TEST(CheckedFormat, TakesTextsOfAnyConstantOrigin) {
    static constexpr wchar_t name[] = L"wide";
    const wchar_t* const pointer = name;
    const std::string narrow = "narrow";
    EXPECT_EQ(accepted(L"%s%s%hs", pointer, static_cast<const wchar_t*>(name), narrow.c_str()), L"%s%s%hs");
}
