#include "JournalFolder.h"

#include "Crypto.h"
#include "Folders.h"
#include "KvCStringConversion.h"
#include "LockedFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <string_view>
#include <utility>

using namespace KvNReflasher;

namespace {

constexpr std::string_view suffix = ".jsonl";
constexpr std::size_t mostRuns = 1000;
constexpr std::chrono::days longestKept{400};
/// "20261122T101500123Z-" and eight digits.
constexpr std::size_t idLength = 28;

std::string written(const char* format, std::chrono::system_clock::time_point moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(moment - day));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()));
    return text.data();
}

} // namespace

std::string newRunId(std::chrono::system_clock::time_point now) {
    std::random_device random;
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", random());
    return written("%04d%02u%02uT%02d%02d%02d%03dZ-", now) + digits.data();
}

std::string preciseTextOf(std::chrono::system_clock::time_point moment) {
    return written("%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", moment);
}

std::wstring runFilePath(const std::wstring& folder, const std::string& id) {
    return folder + L"\\" + toWide(KvCString(std::string_view(id))) + L".jsonl";
}

bool isRunId(std::string_view id) {
    return id.size() == idLength && std::all_of(id.begin(), id.end(), [](char character) {
               return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
                      character == 'T' || character == 'Z' || character == '-';
           });
}

std::vector<std::string> runIdsIn(const std::wstring& folder) {
    std::vector<std::string> ids;
    for (const std::string& name : filesOfFolder(folder)) {
        if (name.ends_with(suffix) && isRunId(std::string_view(name).substr(0, name.size() - suffix.size()))) {
            ids.push_back(name.substr(0, name.size() - suffix.size()));
        }
    }
    return ids;
}

void removeOldRuns(const std::wstring& folder, std::chrono::system_clock::time_point now) {
    std::vector<std::string> ids = runIdsIn(folder);
    const auto firstYoung = std::lower_bound(ids.begin(), ids.end(), newRunId(now - longestKept));
    const auto firstOfNewest = ids.size() > mostRuns ? ids.end() - mostRuns : ids.begin();
    ids.erase(std::max(firstYoung, firstOfNewest), ids.end());
    if (ids.empty()) {
        return;
    }
    for (const KvTRun& run : listRuns(folder).runs) {
        const bool isOld = std::binary_search(ids.begin(), ids.end(), run.id);
        if (isOld && !run.isOpen() && run.state != KvERunState::running) {
            (void)removeFile(runFilePath(folder, run.id));
        }
    }
}
