#include "PlanningTest.h"

#include "KvCErrorManager.h"
#include "KvEmulation.h"
#include "MessageBytes.h"

#include <iterator>
#include <memory>

void PlanningTest::TearDown() {
    inventory_.clear();
    EXPECT_TRUE(KvEmulation::ledger().isClean());
    EXPECT_EQ(0U, KvCErrorManager::getInstance()->getMasterErrorList().getErrorCount());
}

void PlanningTest::targetTakesFiles(const KvTUpdateElement& fileSystemTemplate) {
    inventory_.setFileSystemTemplate(std::make_unique<KvTUpdateElement>(fileSystemTemplate));
}

const KvTUpdateElement& PlanningTest::elementAt(std::size_t position) {
    static const KvTUpdateElement none;
    if (position >= elements().size()) {
        ADD_FAILURE() << "there is no element " << position;
        return none;
    }
    return *std::next(elements().begin(), static_cast<std::ptrdiff_t>(position));
}

std::vector<std::uint32_t> PlanningTest::archiveFileIndices() const {
    std::vector<std::uint32_t> indices;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        indices.push_back(element.archiveFileIndex);
    }
    return indices;
}

std::vector<std::uint32_t> PlanningTest::phases() const {
    std::vector<std::uint32_t> phases;
    for (const KvTUpdateElement& element : inventory_.elements()) {
        phases.push_back(element.phase);
    }
    return phases;
}

std::vector<std::uint32_t> PlanningTest::matchCounts() const {
    std::vector<std::uint32_t> counts;
    for (const KvTArchiveFile& file : archive_.files()) {
        counts.push_back(file.matchCount);
    }
    return counts;
}

std::string PlanningTest::messages() {
    return bytesOf(KeptMessages::text());
}

std::string PlanningTest::printed(const std::function<void()>& print) {
    KeptMessages::forget();
    print();
    std::string text = messages();
    KeptMessages::forget();
    return text;
}
