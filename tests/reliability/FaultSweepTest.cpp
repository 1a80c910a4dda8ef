#include "EnvironmentVariable.h"
#include "ExampleRack.h"
#include "KvEmulation.h"
#include "KvIReflasher.h"
#include "SessionLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

using namespace KvNReflasher;

namespace {

/// So many sessions may fail to find the rack after its reboot.
constexpr std::uint32_t attemptLimit = 5;

/// One in so many calls is disturbed.
std::uint32_t stride() {
    return std::max(numberFromEnvironment("KV_SWEEP_STRIDE", KV_USUAL_STRIDE), 1U);
}

/// What the samples are drawn with.
std::uint32_t seed() {
    return numberFromEnvironment("KV_SWEEP_SEED", 1);
}

/// The numbers of the calls to disturb, from 1 on: of each `stride()` calls in a row one, drawn by chance.
std::vector<std::uint32_t> sampleOf(std::uint32_t calls) {
    std::mt19937 random(seed());
    std::vector<std::uint32_t> sample;
    std::uint32_t row = 0;
    for (std::uint32_t before = 0; before < calls; before += row) {
        row = std::min(stride(), calls - before);
        sample.push_back(before + 1 + static_cast<std::uint32_t>(random() % row));
    }
    return sample;
}

std::size_t count(std::string_view text, std::string_view part) {
    std::size_t number = 0;
    for (std::size_t place = text.find(part); place != std::string_view::npos;
         place = text.find(part, place + part.size())) {
        ++number;
    }
    return number;
}

std::size_t successes(const std::vector<std::string>& calls) {
    return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), [](const std::string& call) {
        return call.find("-> status") == std::string::npos;
    }));
}

/// Distinguishes an element from the others of its rack.
std::string nameOf(const KvTUpdateElementInfo& element) {
    return SessionLog::narrow(element.unitPath + L" | " + std::to_wstring(element.slot) + L" | " + element.displayName +
                              L" | ");
}

/// What a plan says of an element.
std::string describe(const KvTUpdateElementInfo& element) {
    return nameOf(element) + SessionLog::narrow(element.installedVersion) + (element.valid ? " valid" : " invalid") +
           (element.active ? " active" : " inactive") + (element.disabled ? "" : " to be updated");
}

/// The elements and files of a rack.
struct RackState {
    std::set<std::string> elements;
    std::map<std::string, std::string> files;

    bool operator==(const RackState&) const = default;
};

/// Updates the example rack with faults at its calls, and looks at what they leave.
class FaultSweepTest : public testing::TestWithParam<std::string> {
protected:
    FaultSweepTest() {
        options.archiveFolder = exampleArchive();
        options.descriptionFileName = L"archive.json";
        options.target = L"127.0.0.1";
        options.verbose = true;
    }
    void TearDown() override { KvEmulation::reset(); }

    /// An update of the rack as it is served, and, when that succeeded, the reboot that makes it effective.
    void update();
    /// Updates a fresh rack with these faults, and proves that nothing is lost. How many calls were hit.
    std::uint32_t updateWith(const std::vector<SingleFault>& faults);
    /// How often an undisturbed update calls the operation.
    std::uint32_t callsOf(const std::string& operation);
    /// What an undisturbed update leads to. The first call makes one.
    const RackState& complete();

    KvTOptions options{};
    ExampleRack rack;
    SessionLog log;
    EnvironmentVariable timeScale{"KV_TIME_SCALE", "0"};

    // Of the last update:
    std::uint32_t prepared = 0;
    bool updated = false;
    bool rebooted = false;
    /// Before the update.
    std::vector<KvTUpdateElementInfo> elements;

private:
    std::unique_ptr<KvIReflasher> makeSession(std::uint32_t mode);
    static std::vector<KvTUpdateElementInfo> elementsOf(KvIReflasher& session);
    RackState state();
    void expectConsistentVerdict();
    void expectInstalledAsSaid(const RackState& now);
    void expectNextUpdateCompletes();
};

std::unique_ptr<KvIReflasher> FaultSweepTest::makeSession(std::uint32_t mode) {
    options.mode = mode;
    std::unique_ptr<KvIReflasher> session(KvIReflasher::createInstance(options));
    session->setPhaseCallback(SessionLog::onPhase);
    session->setElementErrorCallback(SessionLog::onElementError);
    session->setProgressCallback(SessionLog::onProgress);
    session->setMessageCallback(SessionLog::onMessage);
    return session;
}

std::vector<KvTUpdateElementInfo> FaultSweepTest::elementsOf(KvIReflasher& session) {
    KvTUpdateElementInfo* records = nullptr;
    std::uint32_t number = 0;
    session.getUpdateElements(records, number);
    const std::unique_ptr<KvTUpdateElementInfo[]> owner(records);
    return {records, records + number};
}

void FaultSweepTest::update() {
    log.clear();
    const std::unique_ptr<KvIReflasher> session = makeSession(performUpdate);
    prepared = session->prepare();
    elements = elementsOf(*session);
    updated = prepared == 0 && session->run();
    std::uint32_t rebootSupport = 0;
    rebooted = updated && session->getRebootSupportStatus(rebootSupport) && session->reboot();
}

/// After a reboot it takes some attempts until the rack is found again.
RackState FaultSweepTest::state() {
    std::unique_ptr<KvIReflasher> session = makeSession(showUpdatePlan);
    for (std::uint32_t attempt = 0; session->prepare() != 0; ++attempt) {
        if (attempt == attemptLimit) {
            ADD_FAILURE() << "The rack does not come back.";
            return {};
        }
        session = makeSession(showUpdatePlan);
    }
    RackState now;
    for (const KvTUpdateElementInfo& element : elementsOf(*session)) {
        now.elements.insert(describe(element));
    }
    now.files = rack.files();
    return now;
}

void FaultSweepTest::expectConsistentVerdict() {
    const std::string text = log.text();
    const std::size_t results = text.find("\nResults:\n");
    const std::size_t failures =
        results == std::string::npos ? 0 : count(std::string_view(text).substr(results), "\n    ERROR: ");
    const std::vector<std::string> notified = log.notificationsOf("elementError");
    EXPECT_EQ(std::set<std::string>(notified.begin(), notified.end()).size(), failures) << text;
    EXPECT_EQ(count(text, "\n    Update failed!\n"), failures > 0 ? 1U : 0U) << text;
    const bool reported = text.find("\nReported errors:\n") != std::string::npos;
    const bool completed = text.find("\n    Update completed successfully!\n") != std::string::npos;
    EXPECT_EQ(updated, completed && !reported) << text;
    if (prepared != 0) {
        EXPECT_NE(text.find("ERROR: "), std::string::npos) << text;
        EXPECT_TRUE(log.callsOf("lock").empty());
    } else {
        // An update that failed says why.
        EXPECT_TRUE(updated || failures > 0 || reported) << text;
    }
}

/// What was to be updated and did not fail is up to date now. (Files whose state the target does not tell never are.)
void FaultSweepTest::expectInstalledAsSaid(const RackState& now) {
    if (log.text().find("\nResults:\n") == std::string::npos) {
        return;
    }
    std::set<std::string> open;
    std::set_difference(now.elements.begin(), now.elements.end(), complete().elements.begin(),
                        complete().elements.end(), std::inserter(open, open.end()));
    const std::vector<std::string> failed = log.notificationsOf("elementError");
    for (const KvTUpdateElementInfo& element : elements) {
        const std::string event = "elementError " + std::to_string(element.index);
        if (!element.disabled && element.hasArchiveFile != 0 &&
            std::find(failed.begin(), failed.end(), event) == failed.end()) {
            const auto found = open.lower_bound(nameOf(element));
            EXPECT_TRUE(found == open.end() || !found->starts_with(nameOf(element))) << *found;
        }
    }
    if (updated && failed.empty()) {
        EXPECT_EQ(now.files, complete().files);
    }
}

void FaultSweepTest::expectNextUpdateCompletes() {
    update();
    EXPECT_EQ(prepared, 0U);
    EXPECT_TRUE(updated) << log.text();
    EXPECT_TRUE(rebooted);
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    EXPECT_EQ(state(), complete());
}

std::uint32_t FaultSweepTest::updateWith(const std::vector<SingleFault>& faults) {
    std::string name;
    for (const SingleFault& fault : faults) {
        name += fault.call + " " + std::to_string(fault.occurrence) + " ";
    }
    SCOPED_TRACE(name);
    rack.serveFresh(faults);
    update();
    const std::uint32_t met = KvEmulation::ledger().faultsMet;
    // A release that was itself hit counts as made, and what it was to release as released: none may come twice.
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    EXPECT_EQ(log.callsOf("deleteRemoteFile").size(), successes(log.callsOf("transferFile")));
    expectConsistentVerdict();
    if (rack.serveAgain()) {
        expectInstalledAsSaid(state());
        expectNextUpdateCompletes();
    }
    return met;
}

/// A fault at a call is met when there are so many calls: what comes before it is as without it.
std::uint32_t FaultSweepTest::callsOf(const std::string& operation) {
    const auto isCalled = [&](std::uint32_t occurrence) {
        rack.serveFresh({{operation, occurrence}});
        update();
        return KvEmulation::ledger().faultsMet > 0;
    };
    std::uint32_t called = 0;
    std::uint32_t notCalled = 1;
    while (isCalled(notCalled)) {
        called = notCalled;
        notCalled *= 2;
    }
    while (notCalled - called > 1) {
        const std::uint32_t middle = called + (notCalled - called) / 2;
        (isCalled(middle) ? called : notCalled) = middle;
    }
    return called;
}

const RackState& FaultSweepTest::complete() {
    static const RackState reached = [this] {
        rack.serveFresh({});
        update();
        EXPECT_TRUE(rebooted) << log.text();
        return state();
    }();
    return reached;
}

} // namespace

TEST_P(FaultSweepTest, NothingIsLostWhicheverCallFails) {
    static_cast<void>(complete());
    const std::uint32_t calls = callsOf(GetParam());
    ASSERT_GT(calls, 0U) << "An update does not call it.";
    const std::vector<std::uint32_t> sample = sampleOf(calls);
    for (const std::uint32_t occurrence : sample) {
        EXPECT_EQ(updateWith({{GetParam(), occurrence}}), 1U);
        if (HasFailure()) {
            break;
        }
    }
    std::cout << GetParam() << ": " << calls << " calls, " << sample.size() << " of them disturbed, seed " << seed()
              << '\n';
}

INSTANTIATE_TEST_SUITE_P(Operations, FaultSweepTest, testing::ValuesIn(KvEmulation::faultOperations()),
                         [](const auto& tested) { return tested.param; });

using FaultPairsTest = FaultSweepTest;

TEST_F(FaultPairsTest, NothingIsLostWhenTwoCallsFail) {
    static_cast<void>(complete());
    std::vector<SingleFault> calls;
    for (const std::string& operation : KvEmulation::faultOperations()) {
        const std::uint32_t number = callsOf(operation);
        for (std::uint32_t occurrence = 1; occurrence <= number; ++occurrence) {
            calls.push_back({operation, occurrence});
        }
    }
    const std::uint32_t pairs = numberFromEnvironment("KV_SWEEP_PAIRS", 300) / stride();
    std::mt19937 random(seed());
    std::uint32_t bothMet = 0;
    for (std::uint32_t pair = 0; pair < pairs && !HasFailure(); ++pair) {
        const SingleFault& first = calls[random() % calls.size()];
        const SingleFault& second = calls[random() % calls.size()];
        bothMet += updateWith({first, second}) == 2 ? 1U : 0U;
    }
    EXPECT_GT(bothMet, pairs / 4);
    std::cout << calls.size() << " calls; " << pairs << " pairs of seed " << seed() << ", both met by " << bothMet
              << '\n';
}
