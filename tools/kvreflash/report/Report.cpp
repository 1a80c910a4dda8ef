#include "Report.h"

#include "FilePath.h"
#include "WholeFile.h"

#include <algorithm>
#include <array>
#include <cstdio>

KvEOutcome KvTReport::outcomeOf(const KvTPlannedElement& element) const {
    if (!element.isUpdated()) {
        return KvEOutcome::untouched;
    }
    if (!isUpdate) {
        return KvEOutcome::planned;
    }
    if (failedElements.count(element.index) != 0) {
        return KvEOutcome::failed;
    }
    const KvTVerifiedElement* one = verificationOf(element);
    const bool isDone = result == exitSuccess || (one != nullptr && one->result == KvEVerified::asExpected);
    return isDone ? KvEOutcome::updated : KvEOutcome::uncertain;
}

const KvTVerifiedElement* KvTReport::verificationOf(const KvTPlannedElement& element) const {
    const auto found =
        std::lower_bound(verified.begin(), verified.end(), element.index,
                         [](const KvTVerifiedElement& one, std::uint32_t index) { return one.element->index < index; });
    return found != verified.end() && found->element->index == element.index ? &*found : nullptr;
}

std::string withoutOverwritten(const std::string& messages) {
    std::string text;
    std::size_t lineBegin = 0;
    for (const char character : messages) {
        if (character == '\r') {
            text.resize(lineBegin);
            continue;
        }
        text += character;
        lineBegin = character == '\n' ? text.size() : lineBegin;
    }
    return text;
}

const char* wordFor(KvEOutcome outcome) {
    constexpr std::array words = {"untouched", "planned", "updated", "failed", "uncertain"};
    return words.at(static_cast<std::size_t>(outcome));
}

std::string timeText(std::chrono::system_clock::time_point time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::seconds>(time - day));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d UTC", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text.data();
}

bool writeReport(const KvTReport& report, const std::string& path) {
    return writeWholeFile(filePath(path), path.ends_with(".json") ? reportDocument(report) : reportPage(report));
}
