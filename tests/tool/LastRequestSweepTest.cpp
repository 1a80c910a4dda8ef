#include "EnvironmentVariable.h"
#include "ExampleRack.h"
#include "KvEmulation.h"
#include "RunningUpdate.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>

using namespace KvNReflasher;

namespace {

/// An update of the example rack that is asked to end three times, each at a moment of its own: events and messages
/// are the moments. The clock is the test's.
class AskedUpdate {
public:
    /// Runs it. False if it has ended before the last request.
    bool run(const KvTOptions& options, std::array<std::uint32_t, 3> moments) {
        moments_ = moments;
        session_.reset(KvISession::createInstance(options));
        update_.emplace([this](KvEStop how) { session_->requestStop(how); });
        session_->setEventFunction(
            [](const KvTEvent& event, void* context) {
                auto& asked = *static_cast<AskedUpdate*>(context);
                asked.update_->onEvent(event);
                if (event.event == KvEEvent::elementStart) {
                    asked.lastStarted_ = event.value;
                }
                asked.pass();
            },
            this);
        session_->setMessageFunction(
            [](const std::string&, void* context) { static_cast<AskedUpdate*>(context)->pass(); }, this);
        EXPECT_EQ(0U, session_->prepare());
        update_->setPlan(*session_->plan());
        (void)session_->run();
        return isEnded_;
    }
    [[nodiscard]] std::uint32_t passed() const { return passed_; }
    /// Updates were under way when the last request came.
    [[nodiscard]] bool hadUpdatesUnderWay() const { return hadUpdatesUnderWay_; }

private:
    void pass() {
        ++passed_;
        while (asked_ < moments_.size() && passed_ == moments_.at(asked_)) {
            ++asked_;
            const auto answer =
                update_->request(std::chrono::steady_clock::time_point(asked_ * std::chrono::seconds(2)));
            EXPECT_EQ(answer.endsTool, asked_ == moments_.size());
            if (answer.endsTool) {
                isEnded_ = true;
                expectBoards(answer.text);
            }
        }
    }

    /// The text names the board of each element that the session has under way. If there is none, it may name the board
    /// whose update is about to begin or has just ended.
    void expectBoards(const std::string& text) {
        std::set<std::string> boards;
        const KvTOutcome outcome = session_->outcome();
        for (std::size_t index = 0; index < outcome.elements.size(); ++index) {
            if (outcome.elements[index].result == KvEResult::inProgress) {
                boards.insert(boardOf(index));
            }
        }
        hadUpdatesUnderWay_ = !boards.empty();
        for (const std::string& board : boards) {
            EXPECT_NE(text.find(board), std::string::npos) << text;
        }
        if (boards.empty() && text.find("no update was in progress") == std::string::npos) {
            ASSERT_TRUE(lastStarted_) << text;
            EXPECT_NE(text.find(boardOf(*lastStarted_)), std::string::npos) << text;
        }
    }

    [[nodiscard]] std::string boardOf(std::size_t index) const {
        const KvTPlannedElement& element = session_->plan()->elements[index];
        return element.boardName + ", S/N " + std::to_string(element.serialNumber);
    }

    std::array<std::uint32_t, 3> moments_{};
    std::unique_ptr<KvISession> session_;
    std::optional<RunningUpdate> update_;
    std::uint32_t passed_ = 0;
    std::size_t asked_ = 0;
    bool isEnded_ = false;
    bool hadUpdatesUnderWay_ = false;
    std::optional<std::uint32_t> lastStarted_;
};

std::uint32_t momentCount() {
    const char* const text = std::getenv("KV_STOP_MOMENTS");
    return text != nullptr ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : 50;
}

TEST(LastRequestSweep, TheToolEndsAtOnceAndNamesTheBoardsThatThisMayCut) {
    const EnvironmentVariable timeScale("KV_TIME_SCALE", "0");
    ExampleRack rack;
    KvTOptions options{};
    options.archiveFolder = exampleArchive();
    options.descriptionFileName = L"archive.json";
    options.target = L"127.0.0.1";
    options.mode = performUpdate;
    rack.serveFresh({});
    AskedUpdate undisturbed;
    EXPECT_FALSE(undisturbed.run(options, {0, 0, 0}));
    constexpr std::uint32_t seed = 1;
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::uint32_t> first(1, undisturbed.passed());
    std::uniform_int_distribution<std::uint32_t> later(0, 3);
    std::uint32_t ended = 0;
    std::uint32_t underWay = 0;
    for (std::uint32_t number = 0; number < momentCount(); ++number) {
        const std::uint32_t one = first(random);
        const std::uint32_t two = one + later(random);
        const std::uint32_t three = two + later(random);
        SCOPED_TRACE(testing::Message() << one << ", " << two << ", " << three);
        rack.serveFresh({});
        AskedUpdate update;
        ended += update.run(options, {one, two, three}) ? 1 : 0;
        underWay += update.hadUpdatesUnderWay() ? 1 : 0;
        KvEmulation::reset();
    }
    std::cout << momentCount() << " moments of seed " << seed << ", " << ended << " before the end, " << underWay
              << " with updates under way\n";
    EXPECT_GT(ended, momentCount() / 2);
    EXPECT_GT(underWay, momentCount() / 10);
}

} // namespace
