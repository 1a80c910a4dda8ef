#pragma once

#include <algorithm>
#include <array>
#include <string_view>

/// Tells which messages of a session are results or errors. From the first one on all are shown.
class QuietFilter {
public:
    /// What follows is printed by run(): the results of everything but an update.
    void beginRun(bool isUpdate) { isOpen_ = isOpen_ || !isUpdate; }

    [[nodiscard]] bool shows(std::string_view message) {
        constexpr std::array<std::string_view, 3> beginnings = {"ERROR: ", "\nResults:", "\nReported errors:"};
        isOpen_ = isOpen_ || std::any_of(beginnings.begin(), beginnings.end(), [message](std::string_view beginning) {
                      return message.starts_with(beginning);
                  });
        return isOpen_ || message.starts_with("WARNING: ");
    }

private:
    bool isOpen_ = false;
};
