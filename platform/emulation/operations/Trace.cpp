#include "Trace.h"

#include "SystemFiles.h"

#include <atomic>
#include <iostream>
#include <new>
#include <string>

namespace {

constexpr const char* variable = "KV_TRACE";

void reportOnce(const std::filesystem::path& path, const std::error_code& error) {
    static std::atomic<bool> isReported{false};
    if (!isReported.exchange(true)) {
        std::cerr << "The trace " << SystemFiles::textOf(path) << " cannot be written: " << error.message() << '\n';
    }
}

} // namespace

bool Trace::isWanted() noexcept {
    try {
        return SystemFiles::pathFromEnvironment(variable).has_value();
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void Trace::append(const KvNJson::json& line) {
    const auto path = SystemFiles::pathFromEnvironment(variable);
    if (!path) {
        return;
    }
    const std::string text = line.dump(-1, ' ', false, KvNJson::error_handler_t::replace) + "\n";
    if (const std::error_code error = SystemFiles::appendWhole(*path, text)) {
        reportOnce(*path, error);
    }
}
