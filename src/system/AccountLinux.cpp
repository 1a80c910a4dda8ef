#include "Account.h"

#include <array>
#include <cerrno>
#include <pwd.h>
#include <unistd.h>
#include <vector>

std::string userName() {
    constexpr std::size_t firstSize = 1024;
    constexpr std::size_t largestSize = std::size_t{1} << 20U;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> texts(firstSize);
    while (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) == ERANGE && texts.size() < largestSize) {
        texts.resize(texts.size() * 2);
    }
    return found != nullptr ? std::string(found->pw_name) : std::to_string(geteuid());
}

std::string computerName() {
    constexpr std::size_t longestName = 256;
    std::array<char, longestName + 1> name{};
    return gethostname(name.data(), longestName) == 0 ? name.data() : std::string();
}
