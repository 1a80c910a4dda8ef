#include "KvEmulation.h"
#include "ObservedSessionTest.h"
#include "RedirectedStream.h"

#include <gmock/gmock.h>

#include <array>

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using namespace KvNReflasher;

namespace {

std::string wordOf(const KvTEvent& event) {
    constexpr std::array<const char*, 9> names{"phase",    "progress",      "element error", "locked", "unlocked",
                                               "transfer", "element start", "element end",   "stalled"};
    const std::string value = event.value == 0xFFFFFFFF ? "end" : std::to_string(event.value);
    return std::string(names.at(static_cast<std::size_t>(event.event))) + " " + value +
           (event.succeeded ? "" : " failed");
}

class EventsTest : public ObservedSessionTest {
protected:
    /// The events of an update; progress only if it is asked for.
    std::vector<std::string> eventsOfAnUpdate() {
        EXPECT_EQ(0U, prepare(performUpdate));
        observed().setEventFunction(
            [](const KvTEvent& event, void* context) {
                static_cast<std::vector<std::string>*>(context)->push_back(wordOf(event));
            },
            &events_);
        static_cast<void>(run());
        return events_;
    }
    [[nodiscard]] static std::vector<std::string> withoutProgress(std::vector<std::string> events) {
        std::erase_if(events, [](const std::string& event) { return event.starts_with("progress"); });
        return events;
    }

private:
    std::vector<std::string> events_;
};

} // namespace

TEST_F(EventsTest, ASmallUpdateHasItsEventsInOrder) {
    addNodeElement(1, completeElement(1).polls(2));
    addFile("a.cfg", "cfg/a.cfg", 2);
    EXPECT_THAT(eventsOfAnUpdate(),
                ElementsAre("locked 0", "phase 0", "transfer 0", "element start 0", "progress 50", "progress 100",
                            "progress 100", "element end 0", "phase 1", "element start 1", "element end 1",
                            "progress 100", "phase end", "unlocked 0"));
}

struct EventRow {
    const char* name;
    std::vector<FaultBuilder> faults;
    std::vector<std::string> events;

    friend void PrintTo(const EventRow& row, std::ostream* stream) { *stream << row.name; }
};

class FailureEventsTest : public EventsTest, public testing::WithParamInterface<EventRow> {};

TEST_P(FailureEventsTest, TellTheFailure) {
    addNodeElement(1, completeElement(1).polls(1));
    addNodeElement(2, completeElement(2).polls(1), 2);
    for (const FaultBuilder& fault : GetParam().faults) {
        addFault(fault);
    }
    EXPECT_THAT(withoutProgress(eventsOfAnUpdate()), ElementsAreArray(GetParam().events));
}

INSTANTIATE_TEST_SUITE_P(
    Calls, FailureEventsTest,
    testing::Values(EventRow{"Lock", {fault("lock")}, {}},
                    EventRow{"Transfer",
                             {fault("transferFile")},
                             {"locked 0", "phase 0", "element error 0", "transfer 0 failed", "element error 1",
                              "phase 1", "phase end", "unlocked 0"}},
                    EventRow{"Start",
                             {fault("update2")},
                             {"locked 0", "phase 0", "transfer 0", "element start 0", "element error 0",
                              "element end 0 failed", "element error 1", "phase 1", "phase end", "unlocked 0"}},
                    EventRow{"TwoStatusQueries",
                             {fault("updateStatus2"), fault("updateStatus2").occurrence(2)},
                             {"locked 0", "phase 0", "transfer 0", "element start 0", "element error 0",
                              "element end 0 failed", "element error 1", "phase 1", "phase end", "unlocked 0"}},
                    EventRow{"Errors",
                             {fault("updateErrors2")},
                             {"locked 0", "phase 0", "transfer 0", "element start 0", "element error 0",
                              "element end 0 failed", "element error 1", "phase 1", "phase end", "unlocked 0"}},
                    EventRow{"Unlock",
                             {fault("unlock")},
                             {"locked 0", "phase 0", "transfer 0", "element start 0", "element end 0", "phase 1",
                              "transfer 1", "element start 1", "element end 1", "phase end", "unlocked 0 failed"}}),
    [](const auto& row) { return row.param.name; });

TEST_F(EventsTest, AFileThatIsNotWrittenFails) {
    addNodeElement(1, completeElement(1).parameter("VERSION", "2.0"));
    addFile("a.cfg", "cfg/a.cfg");
    addFault(fault("KvHIM_putFileU"));
    EXPECT_THAT(eventsOfAnUpdate(), Contains("element end 1 failed"));
}

TEST_F(EventsTest, EveryElementThatStartsEnds) {
    addNodeElement(1, completeElement(1).polls(3).finalState(3));
    addNodeElement(2, completeElement(2).polls(1).reports(7, "no"));
    addBoard(1, completeElement(1).polls(2));
    std::vector<std::string> events = withoutProgress(eventsOfAnUpdate());
    std::erase_if(events, [](const std::string& event) { return !event.starts_with("element "); });
    EXPECT_THAT(events,
                ElementsAre("element start 0", "element start 1", "element start 2", "element error 0",
                            "element end 0 failed", "element error 1", "element end 1 failed", "element end 2"));
}

TEST_F(EventsTest, AnEventComesRightAfterTheCallbackOfItsMeaning) {
    addNodeElement(1, completeElement(1).polls(1).finalState(3));
    static std::vector<std::string> order;
    order.clear();
    EXPECT_EQ(0U, prepare(performUpdate));
    const KvTNumberCallback callback = [](std::uint32_t value) {
        order.push_back("callback " + std::to_string(value));
    };
    session().setPhaseCallback(callback);
    session().setElementErrorCallback(callback);
    session().setProgressCallback(callback);
    observed().setEventFunction(
        [](const KvTEvent& event, void* /*context*/) {
            if (event.event <= KvEEvent::elementError) {
                order.push_back("event " + std::to_string(event.value));
            }
        },
        nullptr);
    EXPECT_FALSE(run());
    ASSERT_LT(4U, order.size());
    ASSERT_EQ(0U, order.size() % 2);
    for (std::size_t index = 0; index < order.size(); index += 2) {
        EXPECT_EQ("callback" + order[index + 1].substr(5), order[index]);
    }
}

TEST_F(EventsTest, AFunctionThatWasTakenAwayIsCalledNoMore) {
    addNodeElement(1, completeElement(1).polls(1));
    std::vector<std::string> events;
    EXPECT_EQ(0U, prepare(performUpdate));
    observed().setEventFunction(
        [](const KvTEvent& event, void* context) {
            static_cast<std::vector<std::string>*>(context)->push_back(wordOf(event));
        },
        &events);
    observed().setEventFunction(nullptr, nullptr);
    EXPECT_TRUE(run());
    EXPECT_THAT(events, IsEmpty());
}

// Messages.

namespace {

void appendText(const std::string& text, void* context) {
    static_cast<std::string*>(context)->append(text);
}

} // namespace

TEST_F(EventsTest, TheMessageFunctionReceivesTheBytesOfStandardOutput) {
    addNodeElement(1, completeElement(1, "Gr\xC3\xB6\xC3\x9F"
                                         "e")
                          .polls(2));
    addNodeElement(2, completeElement(2, "broken \xC3").polls(1).reports(7, "Fehler: \xE2\x82\xAC"));
    addFile("a.cfg", "cfg/a.cfg"); // what wide texts beyond ASCII become there is the system's own matter
    options.verbose = true;
    options.noProgress = true; // the spinner goes on from session to session
    serve();
    options.mode = performUpdate;
    std::string received;
    {
        const std::unique_ptr<KvISession> listening(KvISession::createInstance(options));
        listening->setMessageFunction(appendText, &received);
        listening->setMessageCallback(SessionLog::onMessage);
        EXPECT_EQ(0U, listening->prepare());
        EXPECT_FALSE(listening->run());
    }
    EXPECT_THAT(log.messages(), IsEmpty());
    KvEmulation::reset();
    std::filesystem::remove_all(target.folder().path() / "state");
    ASSERT_TRUE(target.serveAgain().served);
    std::string printed;
    bool succeeded = true;
    {
        const RedirectedStream output(stdout);
        const std::unique_ptr<KvISession> printing(KvISession::createInstance(options));
        succeeded = printing->prepare() != 0 || printing->run();
        std::fflush(stdout);
        printed = output.received();
    }
    EXPECT_FALSE(succeeded);
    EXPECT_EQ(printed, received);
    EXPECT_THAT(received, testing::HasSubstr("Fehler: \xE2\x82\xAC"));
}

TEST_F(EventsTest, WithoutAMessageFunctionTheCallbackReceivesTheMessages) {
    std::string received;
    observedFor(connectOnly).setMessageFunction(appendText, &received);
    EXPECT_EQ(0U, prepare(connectOnly));
    EXPECT_EQ(banner(), received);
    EXPECT_EQ("", log.text());
    observed().setMessageFunction(nullptr, nullptr);
    EXPECT_EQ(0U, prepare(connectOnly));
    EXPECT_EQ(banner(), received);
    EXPECT_EQ(banner(), log.text());
    closeAfterSecondPrepare(1);
}
