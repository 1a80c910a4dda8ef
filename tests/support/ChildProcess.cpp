#include "ChildProcess.h"

#include <gtest/gtest.h>

std::string ChildProcess::ask(const std::string& line) {
    EXPECT_TRUE(send(line + "\n"));
    std::size_t end = pending_.find('\n');
    while (end == std::string::npos) {
        const std::string piece = receive();
        if (piece.empty()) {
            ADD_FAILURE() << "no answer to \"" << line << "\"";
            return {};
        }
        pending_ += piece;
        end = pending_.find('\n');
    }
    std::string answer = pending_.substr(0, end);
    pending_.erase(0, end + 1);
    if (answer.ends_with('\r')) {
        answer.pop_back();
    }
    return answer;
}
