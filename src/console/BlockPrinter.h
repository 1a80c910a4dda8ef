#pragma once

#include "KvCConsoleWriter.h"

#include <cstddef>
#include <string>

/// Hands a long text to the writer in messages of whole lines of about 16 KiB: a message per line would cost a flush
/// per line, a single one memory for all of them.
class BlockPrinter {
public:
    /// `writer` must outlive the printer.
    explicit BlockPrinter(const KvCConsoleWriter& writer) : writer_(writer) {}

    /// What was not handed over yet, to be appended to.
    [[nodiscard]] std::string& text() { return text_; }
    /// At the end of a line: hands over what has become long enough for a message.
    void endLine() {
        text_ += '\n';
        if (text_.size() >= messageSize) {
            finish();
        }
    }
    /// Hands over the rest.
    void finish() {
        if (!text_.empty()) {
            writer_.print(L"%hs", text_.c_str());
            text_.clear();
        }
    }

private:
    static constexpr std::size_t messageSize = 16384;

    const KvCConsoleWriter& writer_;
    std::string text_;
};
