#pragma once

#include "EnvironmentVariable.h"
#include "ScratchFolder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// Records what sessions do, in its order: the calls that reach the emulated service, their pauses, notifications and
/// messages. There is one at a time; the process's trace belongs to it.
class SessionLog {
public:
    enum class Kind : std::uint8_t { call, pause, notification, message };

    SessionLog();
    SessionLog(const SessionLog&) = delete;
    SessionLog(SessionLog&&) = delete;
    SessionLog& operator=(const SessionLog&) = delete;
    SessionLog& operator=(SessionLog&&) = delete;
    ~SessionLog();

    // The notification functions that a session is given.
    static void onPhase(std::uint32_t number);
    static void onElementError(std::uint32_t index);
    static void onProgress(std::uint32_t percentage);
    static void onMessage(const std::wstring& text);

    /// Called with each notification and message after it was recorded; may throw.
    void setObserver(std::function<void(const std::string& event)> observer) { observer_ = std::move(observer); }
    /// Shows `text` as `shown` in calls.
    void abbreviate(std::string text, std::string shown);

    /// All events so far, or those of some kinds, one text each: a call as its name and fields, followed by
    /// "-> status S, errors N" when it failed; a pause as "sleep MICROSECONDS"; a notification as its name and value; a
    /// message in quotes, as narrow() makes it.
    [[nodiscard]] std::vector<std::string> events();
    [[nodiscard]] std::vector<std::string> events(std::initializer_list<Kind> kinds);
    /// The calls of one operation.
    [[nodiscard]] std::vector<std::string> callsOf(std::string_view operation);
    /// The notifications of one name.
    [[nodiscard]] std::vector<std::string> notificationsOf(std::string_view name);
    /// All messages, joined, as narrow() makes them but with the line ends and tabs that they have.
    [[nodiscard]] std::string text() const;
    /// The messages one by one.
    [[nodiscard]] const std::vector<std::wstring>& messages() const { return messages_; }
    /// Forgets everything recorded so far.
    void clear();

    /// Wide text as narrow: ASCII as it is, with "\n", "\r" and "\t" for line ends and tabs; other characters as
    /// <U+XXXX>.
    [[nodiscard]] static std::string narrow(const std::wstring& text);

private:
    struct Event {
        Kind kind;
        std::string text;
    };

    void record(Kind kind, const std::string& text);
    void notify(std::string_view name, std::uint32_t value);
    /// Takes over the calls and pauses since the last time.
    void catchUp();
    void recordPauses();
    void recordCalls();
    [[nodiscard]] std::string describe(std::string_view line) const;
    [[nodiscard]] std::vector<std::string> withPrefix(Kind kind, std::string_view prefix);

    ScratchFolder folder_;
    EnvironmentVariable trace_;
    std::size_t traced_ = 0;
    std::uint64_t slept_ = 0;
    std::vector<std::pair<std::string, std::string>> abbreviations_;
    std::vector<Event> events_;
    std::vector<std::wstring> messages_;
    std::function<void(const std::string&)> observer_;
};

/// The event of a message of ASCII characters.
[[nodiscard]] std::string said(const std::string& text);
