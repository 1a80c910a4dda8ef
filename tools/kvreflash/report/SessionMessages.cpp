#include "SessionMessages.h"

#include "Texts.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

using namespace KvNReflasher;

namespace {

/// Length of the line of progress at the beginning of `text`, its carriage return included; 0 if there is none. The
/// library prints it as "%3u%% %-51.51hs\r", with one character of a spinner.
std::size_t lengthOfProgress(std::string_view text) {
    constexpr std::size_t shortestNumber = 3;
    constexpr std::size_t longestNumber = 10;
    constexpr std::size_t width = 51;
    constexpr std::string_view digits = "0123456789";
    const std::size_t percent = text.substr(0, longestNumber + 1).find('%');
    if (percent == std::string_view::npos || percent < shortestNumber) {
        return 0;
    }
    const std::string_view number = text.substr(0, percent);
    const std::size_t first = number.find_first_not_of(' ');
    if (first == std::string_view::npos || number.find_first_not_of(digits, first) != std::string_view::npos ||
        (first != 0 && percent != shortestNumber)) {
        return 0;
    }
    const std::string_view rest = text.substr(percent + 1);
    const bool isProgress = rest.size() >= width + 2 && rest[0] == ' ' &&
                            std::string_view("-\\|/").find(rest[1]) != std::string_view::npos &&
                            rest.substr(2, width - 1).find_first_not_of(' ') == std::string_view::npos &&
                            rest[width + 1] == '\r';
    return isProgress ? percent + width + 3 : 0;
}

/// `messages` without the lines of progress, each of which begins a line or follows another one.
std::string withoutProgress(std::string_view messages) {
    std::string text;
    while (!messages.empty()) {
        if (const std::size_t progress = lengthOfProgress(messages); progress != 0) {
            messages.remove_prefix(progress);
            continue;
        }
        const std::size_t end = std::min(messages.find('\n'), messages.size() - 1) + 1;
        text.append(messages.substr(0, end));
        messages.remove_prefix(end);
    }
    return text;
}

/// With tabs made visible that are not at the beginning of a line, where the library has its own.
std::string withVisibleTabs(const std::string& messages) {
    std::string text;
    for (const char character : messages) {
        if (character == '\t' && !text.empty() && text.back() != '\n') {
            text += visibleInLine("\t");
        } else {
            text += character;
        }
    }
    return text;
}

/// Names that hold line feeds.
class BrokenNames {
public:
    explicit BrokenNames(const std::set<std::string>& names) {
        for (const std::string& name : names) {
            // A line feed at the end of a name makes no line of its own.
            const std::string_view whole = std::string_view(name).substr(0, name.find_last_not_of('\n') + 1);
            const std::size_t place = whole.find('\n');
            if (place != std::string_view::npos) {
                std::string head(whole.substr(0, place));
                std::reverse(head.begin(), head.end());
                names_.push_back({std::move(head), std::string(whole.substr(place))});
            }
        }
        std::sort(names_.begin(), names_.end(),
                  [](const Name& left, const Name& right) { return left.reversedHead < right.reversedHead; });
    }

    /// `messages` with the line feeds of these names, and what follows them there, made visible.
    [[nodiscard]] std::string joinedIn(std::string_view messages) const {
        std::string text;
        std::size_t copied = 0;
        std::size_t place = messages.find('\n');
        while (!names_.empty() && place != std::string_view::npos) {
            const std::string_view tail = tailAt(messages, place);
            if (!tail.empty()) {
                text.append(messages.substr(copied, place - copied)).append(visibleInLine(std::string(tail)));
                copied = place + tail.size();
            }
            place = messages.find('\n', std::max(copied, place + 1));
        }
        return text.append(messages.substr(copied));
    }

private:
    struct Name {
        /// What is before the first line feed, read backwards.
        std::string reversedHead;
        /// The rest.
        std::string tail;
    };

    /// The longest tail of a name that has its first line feed at `place`; empty if there is none.
    [[nodiscard]] std::string_view tailAt(std::string_view text, std::size_t place) const {
        std::string_view longest;
        auto begin = names_.begin();
        auto end = names_.end();
        for (std::size_t depth = 0; begin != end; ++depth) {
            for (; begin != end && begin->reversedHead.size() == depth; ++begin) {
                if (begin->tail.size() > longest.size() && text.substr(place).starts_with(begin->tail)) {
                    longest = begin->tail;
                }
            }
            if (depth == place) {
                break;
            }
            const auto next = static_cast<unsigned char>(text[place - 1 - depth]);
            const auto byteOf = [depth](const Name& name) {
                return static_cast<unsigned char>(name.reversedHead[depth]);
            };
            begin = std::partition_point(begin, end, [&](const Name& name) { return byteOf(name) < next; });
            end = std::partition_point(begin, end, [&](const Name& name) { return byteOf(name) == next; });
        }
        return longest;
    }

    std::vector<Name> names_;
};

/// The texts of target and archive that the library prints.
std::set<std::string> namesOf(const ReportData& report) {
    std::set<std::string> names;
    for (const KvTArchiveEntry& entry : report.entries) {
        names.insert(entry.fileName);
    }
    if (report.plan == nullptr) {
        return names;
    }
    for (const KvTPlannedElement& element : report.plan->elements) {
        names.insert({element.displayName, element.boardType, element.boardName, element.unitPath, element.targetPath});
    }
    return names;
}

} // namespace

std::string reportedMessages(const std::string& messages, const ReportData& report) {
    return visibleInLines(withVisibleTabs(withoutProgress(BrokenNames(namesOf(report)).joinedIn(messages))));
}
