#include "UpdateTest.h"

#include <iterator>

UpdateTest::UpdateTest()
    : callbacks_{SessionLog::onPhase, SessionLog::onElementError, SessionLog::onProgress, SessionLog::onMessage} {
    options.archiveFolder = archive.wideText();
    options.descriptionFileName = L"archive.json";
    options.target = L"127.0.0.1";
    options.mode = KvNReflasher::performUpdate;
}

void UpdateTest::withoutNotifications() {
    callbacks_ = {nullptr, nullptr, nullptr, SessionLog::onMessage};
}

void UpdateTest::prepare() {
    serve();
    beginSession();
}

void UpdateTest::beginSession() {
    session_.emplace(callbacks_, options);
    ASSERT_TRUE(session_->archive.readArchive());
    ASSERT_TRUE(session_->access.resolveTarget());
    ASSERT_TRUE(session_->access.checkTargetAccessible());
    ASSERT_TRUE(session_->inventory.scanInventory(session_->access.ipAddress()));
    session_->planner.plan();
    EXPECT_EQ(textsOf(errors()), std::vector<std::string>());
    log.clear();
}

bool UpdateTest::run() {
    return session_->driver.run();
}

bool UpdateTest::update() {
    prepare();
    return run();
}

const KvTUpdateElement& UpdateTest::element(std::size_t index) {
    const std::list<KvTUpdateElement>& elements = session_->inventory.elements();
    if (index >= elements.size()) {
        ADD_FAILURE() << "there is no element " << index;
        index = 0;
    }
    return *std::next(elements.begin(), static_cast<std::ptrdiff_t>(index));
}

std::vector<std::uint32_t> UpdateTest::states() {
    std::vector<std::uint32_t> states;
    for (const KvTUpdateElement& element : session_->inventory.elements()) {
        states.push_back(element.updateState);
    }
    return states;
}

std::vector<std::string> UpdateTest::textsOf(const KvCErrorListPool& list) {
    std::vector<std::string> texts;
    for (std::uint32_t index = 0; index < list.getNumberOfUsedEntries(); ++index) {
        texts.emplace_back(list.getErrorText(index));
    }
    return texts;
}

std::vector<std::string> UpdateTest::remoteFiles() const {
    std::vector<std::string> contents;
    for (const std::string& path : target.folder().list()) {
        if (path.starts_with("state/transferred/")) {
            contents.push_back(target.folder().read(path));
        }
    }
    return contents;
}

std::string transferLine(const std::string& name, const std::string& verdict) {
    constexpr std::size_t nameWidth = 46;
    return std::string(8, ' ') + name + std::string(nameWidth - name.size() + 2, ' ') + verdict + "\n";
}
