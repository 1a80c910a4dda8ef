#include "EnvironmentVariable.h"

#include <cstdlib>
#include <deque>
#include <utility>

namespace {

/// putenv() keeps the text that it is given, so that each lasts to the end, at its place. An empty value counts as none
/// everywhere.
void set(const std::string& name, const std::string& value) {
    static std::deque<std::string> settings;
    std::string& setting = settings.emplace_back(name);
    setting.append("=").append(value);
    static_cast<void>(putenv(setting.data()));
}

} // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* const former = std::getenv(name_.c_str())) {
        former_ = former;
    }
    set(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
    set(name_, former_.value_or(""));
}

std::uint32_t numberFromEnvironment(const char* name, std::uint32_t usual) {
    const char* const text = std::getenv(name);
    return text == nullptr ? usual : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}
