#pragma once

#include "KvISession.h"
#include "SessionTest.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Sessions that can be asked what they know.
class ObservedSessionTest : public SessionTest {
protected:
    KvISession& observed() { return static_cast<KvISession&>(session()); }
    std::unique_ptr<KvIReflasher> makeSession() override {
        return std::unique_ptr<KvIReflasher>(KvISession::createInstance(options));
    }

    /// The plan; a test failure and an empty one if there is none.
    [[nodiscard]] const KvNReflasher::KvTPlan& plan();
    [[nodiscard]] KvNReflasher::KvTOutcome outcome() { return observed().outcome(); }
    /// What became of each element, in words.
    [[nodiscard]] std::vector<std::string> results();
    /// Of each file: "NAME phase N PATH: RESULT".
    [[nodiscard]] std::vector<std::string> fileResults();
    /// The texts of the errors that belong to no element.
    [[nodiscard]] std::vector<std::string> errorTexts();

    /// Gives an entry an update file that states the entry's version and checksum. Elements report them afterwards.
    void writeImage(const std::string& name, const char* version = "2.0", std::uint32_t checksum = 2);
    /// The session of this mode, for what is asked before prepare().
    KvISession& observedFor(std::uint32_t mode) {
        options.mode = mode;
        return observed();
    }

    /// Ends the session and forgets the handle of a target that an earlier prepare() of it has opened.
    void closeAfterSecondPrepare(std::uint32_t handlesLeft);
    /// Adds an error to those of the process.
    static void collectError(std::string_view text);
};

/// A result as a word.
[[nodiscard]] std::string nameOf(KvNReflasher::KvEResult result);
[[nodiscard]] std::vector<std::string> textsOf(const std::vector<KvNReflasher::KvTErrorInfo>& errors);
