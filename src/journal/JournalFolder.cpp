#include "JournalFolder.h"

#include "Crypto.h"
#include "Folders.h"
#include "KvCStringConversion.h"
#include "LockedFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
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

/// Writes a number, with leading zeros, over the `digits` characters from `position` on.
void putNumber(std::string& text, std::size_t position, std::size_t digits, std::int64_t number) {
    constexpr std::int64_t base = 10;
    for (; digits > 0; --digits) {
        text[position + digits - 1] = static_cast<char>('0' + number % base);
        number /= base;
    }
}

} // namespace

std::string newRunId(std::chrono::system_clock::time_point now) {
    std::random_device random;
    std::array<char, 16> digits{};
    std::snprintf(digits.data(), digits.size(), "-%08x", random());
    std::string id = preciseTextOf(now);
    std::erase_if(id, [](char character) { return character == '-' || character == ':' || character == '.'; });
    return id + digits.data();
}

/// Each event has its moment: a format would take longer than the rest of its line.
std::string preciseTextOf(std::chrono::system_clock::time_point moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(moment - day));
    std::string text = "0000-00-00T00:00:00.000Z";
    putNumber(text, 0, 4, static_cast<int>(date.year()));
    putNumber(text, 5, 2, static_cast<unsigned>(date.month()));
    putNumber(text, 8, 2, static_cast<unsigned>(date.day()));
    putNumber(text, 11, 2, clock.hours().count());
    putNumber(text, 14, 2, clock.minutes().count());
    putNumber(text, 17, 2, clock.seconds().count());
    putNumber(text, 20, 3, clock.subseconds().count());
    return text;
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
