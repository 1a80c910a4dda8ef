#include "SessionInCTest.h"

#include "UpdateFiles.h"

SessionInCTest::SessionInCTest() {
    addNodeElement(1, completeElement(1, "One").polls(1));
    addNodeElement(2, completeElement(2, "Two").polls(1), 2);
    for (const char* name : {"node1.bin", "node2.bin"}) {
        archive.folder().write(name, firmwareImage(KvCVersion("2.0"), 2));
    }
    addFile("a.cfg", "cfg/a.cfg", 3);
    archiveFolder_ = archive.folder().text();
    options.mode = KVR_MODE_UPDATE;
    options.archive = archiveFolder_.c_str();
    options.target = "127.0.0.1";
}

void SessionInCTest::close() {
    EXPECT_EQ(kvr_session_free(session), KVR_SUCCESS) << kvr_last_error();
    session = nullptr;
}

void SessionInCTest::create() {
    ASSERT_EQ(kvr_session_create(&options, &session), KVR_SUCCESS) << kvr_last_error();
    events.clear();
    messages.clear();
    const auto record = [](const kvr_event* event, void* context) {
        auto& test = *static_cast<SessionInCTest*>(context);
        if (test.onEvent) {
            test.onEvent(*event);
        }
        if (event->kind == KVR_EVENT_MESSAGE) {
            test.messages += event->text;
        } else {
            test.events.push_back(std::to_string(event->kind) + " " + std::to_string(event->value) + " " +
                                  std::to_string(event->succeeded));
        }
    };
    ASSERT_EQ(kvr_session_set_event_function(session, record, this), KVR_SUCCESS);
}

std::int32_t SessionInCTest::prepare() {
    create();
    return kvr_prepare(session);
}

std::int32_t SessionInCTest::update() {
    const std::int32_t result = prepare() == KVR_SUCCESS ? kvr_run(session) : KVR_FAILED;
    close();
    return result;
}

kvr_plan SessionInCTest::plan() const {
    auto record = sized<kvr_plan>();
    EXPECT_EQ(kvr_session_get_plan(session, &record), KVR_SUCCESS) << kvr_last_error();
    return record;
}

kvr_element SessionInCTest::element(std::uint32_t index) const {
    auto record = sized<kvr_element>();
    EXPECT_EQ(kvr_session_get_element(session, index, &record), KVR_SUCCESS) << kvr_last_error();
    return record;
}

kvr_outcome SessionInCTest::outcome() const {
    auto record = sized<kvr_outcome>();
    EXPECT_EQ(kvr_session_get_outcome(session, &record), KVR_SUCCESS) << kvr_last_error();
    return record;
}

kvr_element_result SessionInCTest::result(std::uint32_t index) const {
    auto record = sized<kvr_element_result>();
    EXPECT_EQ(kvr_session_get_result(session, index, &record), KVR_SUCCESS) << kvr_last_error();
    return record;
}

std::string SessionInCTest::document(std::uint32_t kind) const {
    const char* text = nullptr;
    EXPECT_EQ(kvr_session_get_document(session, kind, &text), KVR_SUCCESS) << kvr_last_error();
    return text != nullptr ? text : "";
}
