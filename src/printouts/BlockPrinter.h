#pragma once

#include "KvCConsoleWriter.h"

#include <cstddef>
#include <string>

/// Hands a long text to the writer in messages of whole lines of about a given size: a message per line would cost a
/// flush per line, a single one memory for all of them.
class KvCBlockPrinter {
public:
    /// 16 KiB.
    static constexpr std::size_t blockSize = 16384;
    /// A message for everything. Beyond this size it would have more characters than the writer can count.
    static constexpr std::size_t wholeText = std::size_t(1) << 30U;

    /// `writer` must outlive the printer. A message ends with the line that makes it `messageSize` bytes or more.
    explicit KvCBlockPrinter(const KvCConsoleWriter& writer, std::size_t messageSize = blockSize)
        : writer_(writer), messageSize_(messageSize) {}

    /// What was not handed over yet, to be appended to.
    [[nodiscard]] std::string& text() { return text_; }
    /// At the end of a line: hands over what has become long enough for a message.
    void endLine() {
        text_ += '\n';
        if (text_.size() >= messageSize_) {
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
    const KvCConsoleWriter& writer_;
    std::size_t messageSize_;
    std::string text_;
};
