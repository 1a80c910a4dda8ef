#include "DocumentFrame.h"

#include "JsonValues.h"

#include <algorithm>
#include <utility>

namespace KvNReflasher {

namespace {

/// Of all formats; a greater one if members change or go, not if some are added.
constexpr std::uint32_t formatVersion = 1;

/// The text at the beginning of `json`, with its quotation marks.
std::string_view leadingText(std::string_view json) {
    std::size_t end = 1;
    while (json[end] != '"') {
        end += json[end] == '\\' ? 2 : 1;
    }
    return json.substr(0, end + 1);
}

/// Writes a JSON text that has no blanks with each member and item on a line of its own.
class Layout {
public:
    explicit Layout(std::string_view json) : rest_(json) {
        while (!rest_.empty()) {
            addNext();
        }
    }

    [[nodiscard]] std::string take() && { return std::move(text_); }

private:
    void addNext() {
        switch (rest_.front()) {
        case '"':
            return add(leadingText(rest_).size());
        case '{':
        case '[':
            return open();
        case '}':
        case ']':
            --depth_;
            newLine();
            return add(1);
        case ',':
            add(1);
            return newLine();
        case ':':
            add(1);
            text_ += ' ';
            return;
        default:
            return add(std::min(rest_.find_first_of(",}]"), rest_.size()));
        }
    }

    void open() {
        const bool isEmpty = rest_[1] == '}' || rest_[1] == ']';
        add(isEmpty ? 2 : 1);
        if (!isEmpty) {
            ++depth_;
            newLine();
        }
    }

    void add(std::size_t size) {
        text_ += rest_.substr(0, size);
        rest_.remove_prefix(size);
    }

    void newLine() {
        constexpr std::size_t indentation = 4;
        text_ += '\n';
        text_.append(indentation * depth_, ' ');
    }

    std::string_view rest_;
    std::string text_;
    std::size_t depth_ = 0;
};

} // namespace

KvCJsonText formatRecord(std::string_view name, std::uint32_t version) {
    KvCJsonText format = KvCJsonText::makeObject();
    format.set("name", name);
    format.set("version", version);
    return format;
}

KvCJsonText framedDocument(const std::string& command, const KvTVerdict& verdict) {
    KvCJsonText document = KvCJsonText::makeObject();
    document.set("format", formatRecord("kvreflash." + command, formatVersion));
    setVerdict(document, verdict);
    return document;
}

void setVerdict(KvCJsonText& record, const KvTVerdict& verdict) {
    record.set("failure", codeOrNull(verdict.failure));
    record.set("retryable", verdict.isRetryable());
    record.set("message", verdict.message);
}

std::string documentText(const KvCJsonText& document) {
    return Layout(document.text()).take().append(1, '\n');
}

} // namespace KvNReflasher
