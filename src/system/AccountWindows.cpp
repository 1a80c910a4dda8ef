#include "Account.h"

#include "TextConversion.h"

#include <array>
#include <windows.h>

std::string userName() {
    constexpr DWORD longestName = 256;
    std::array<wchar_t, longestName + 1> name{};
    DWORD size = longestName;
    return GetUserNameW(name.data(), &size) != 0 ? wideToUtf8(name.data()) : std::string();
}

std::string computerName() {
    constexpr DWORD longestName = 256;
    std::array<wchar_t, longestName + 1> name{};
    DWORD size = longestName;
    return GetComputerNameExW(ComputerNameDnsHostname, name.data(), &size) != 0 ? wideToUtf8(name.data())
                                                                                : std::string();
}
