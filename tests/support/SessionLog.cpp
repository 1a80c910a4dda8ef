#include "SessionLog.h"

#include "KvEmulation.h"
#include "KvNJson.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <type_traits>
#include <utility>

namespace {

constexpr const char* traceFile = "trace";

SessionLog*& current() {
    static SessionLog* log = nullptr;
    return log;
}

bool isLayout(wchar_t character) {
    return character == L'\n' || character == L'\r' || character == L'\t';
}

std::string escaped(wchar_t character) {
    if (isLayout(character)) {
        return character == L'\n' ? "\\n" : character == L'\r' ? "\\r" : "\\t";
    }
    const auto number = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<wchar_t>>(character));
    if (number >= 0x20 && number < 0x7F) {
        return {static_cast<char>(number)};
    }
    constexpr std::size_t size = 16;
    std::string text(size, '\0');
    text.resize(static_cast<std::size_t>(std::snprintf(text.data(), size, "<U+%04X>", static_cast<unsigned>(number))));
    return text;
}

std::string textOf(KvNJson::jsonView value) {
    if (value.is_string()) {
        return std::string(value.get_string());
    }
    return value.is_number_unsigned() ? std::to_string(value.get_unsigned())
                                      : std::to_string(static_cast<std::int64_t>(value.get_double()));
}

std::string messageEvent(const std::wstring& text) {
    std::string event = "\"";
    return event.append(SessionLog::narrow(text)).append("\"");
}

void replaceAll(std::string& text, const std::string& part, const std::string& by) {
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + by.size())) {
        text.replace(place, part.size(), by);
    }
}

} // namespace

SessionLog::SessionLog() : trace_("KV_TRACE", (folder_.path() / traceFile).string()) {
    current() = this;
    slept_ = KvEmulation::ledger().sleptMicroseconds;
}

SessionLog::~SessionLog() {
    current() = nullptr;
}

void SessionLog::onPhase(std::uint32_t number) {
    current()->notify("phase", number);
}

void SessionLog::onElementError(std::uint32_t index) {
    current()->notify("elementError", index);
}

void SessionLog::onProgress(std::uint32_t percentage) {
    current()->notify("progress", percentage);
}

void SessionLog::onMessage(const std::wstring& text) {
    current()->messages_.push_back(text);
    current()->record(Kind::message, '"' + narrow(text) + '"');
}

void SessionLog::abbreviate(std::string text, std::string shown) {
    abbreviations_.emplace_back(std::move(text), std::move(shown));
}

void SessionLog::notify(std::string_view name, std::uint32_t value) {
    std::string text(name);
    record(Kind::notification, text.append(" ").append(std::to_string(value)));
}

void SessionLog::record(Kind kind, const std::string& text) {
    catchUp();
    events_.push_back({kind, text});
    if (observer_) {
        observer_(text);
    }
}

/// Between two messages a session sleeps first and calls afterwards, if it does both.
void SessionLog::catchUp() {
    recordPauses();
    recordCalls();
}

void SessionLog::recordPauses() {
    const std::uint64_t slept = KvEmulation::ledger().sleptMicroseconds;
    if (slept > slept_) {
        events_.push_back({Kind::pause, "sleep " + std::to_string(slept - slept_)});
    }
    slept_ = slept;
}

void SessionLog::recordCalls() {
    std::ifstream file(folder_.path() / traceFile, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(traced_));
    std::string line;
    while (std::getline(file, line)) {
        traced_ += line.size() + 1;
        events_.push_back({Kind::call, describe(line)});
    }
}

std::string SessionLog::describe(std::string_view line) const {
    const KvNJson::json document = KvNJson::json::parse(line);
    const KvNJson::jsonView call = document.view();
    std::string text;
    for (std::size_t index = 0; index < call.size(); ++index) {
        if (call.key(index) == "status") {
            text += " -> status";
        } else if (call.key(index) == "errors") {
            text += ", errors";
        }
        text.append(text.empty() ? "" : " ").append(textOf(call.at(index)));
    }
    for (const auto& [part, shown] : abbreviations_) {
        replaceAll(text, part, shown);
    }
    return text;
}

std::vector<std::string> SessionLog::events() {
    return events({Kind::call, Kind::pause, Kind::notification, Kind::message});
}

std::vector<std::string> SessionLog::events(std::initializer_list<Kind> kinds) {
    catchUp();
    std::vector<std::string> texts;
    for (const Event& event : events_) {
        if (std::find(kinds.begin(), kinds.end(), event.kind) != kinds.end()) {
            texts.push_back(event.text);
        }
    }
    return texts;
}

std::vector<std::string> SessionLog::callsOf(std::string_view operation) {
    return withPrefix(Kind::call, operation);
}

std::vector<std::string> SessionLog::notificationsOf(std::string_view name) {
    return withPrefix(Kind::notification, name);
}

/// `prefix` is a whole word.
std::vector<std::string> SessionLog::withPrefix(Kind kind, std::string_view prefix) {
    std::vector<std::string> texts = events({kind});
    std::erase_if(texts, [prefix](const std::string& text) {
        return !text.starts_with(prefix) || (text.size() > prefix.size() && text[prefix.size()] != ' ');
    });
    return texts;
}

std::string SessionLog::text() const {
    std::string joined;
    for (const std::wstring& message : messages_) {
        for (const wchar_t character : message) {
            joined += isLayout(character) ? std::string{static_cast<char>(character)} : escaped(character);
        }
    }
    return joined;
}

void SessionLog::clear() {
    catchUp();
    events_.clear();
    messages_.clear();
}

std::string SessionLog::narrow(const std::wstring& text) {
    std::string result;
    for (const wchar_t character : text) {
        result += escaped(character);
    }
    return result;
}

std::string said(const std::string& text) {
    return messageEvent({text.begin(), text.end()});
}
