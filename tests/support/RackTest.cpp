#include "RackTest.h"

#include "KvEmulation.h"

#include <utility>

RackTest::RackTest() {
    log.abbreviate(archive.folder().text(), "ARCHIVE");
}

void RackTest::SetUp() {
    KvEmulation::reset();
}

void RackTest::TearDown() {
    close();
    KvEmulation::KvTLedger held = KvEmulation::ledger();
    EXPECT_EQ(held.badReleases, expectedBadReleases);
    held.badReleases = 0;
    EXPECT_TRUE(held.isClean());
    KvEmulation::reset();
}

void RackTest::addNodeElement(std::uint32_t id, ItemBuilder element, std::uint32_t sequence) {
    node.element(std::move(element));
    archive.add(entry("node" + std::to_string(id) + ".bin").board("NODE", id).sequence(sequence));
}

void RackTest::addBoard(std::uint32_t number, ItemBuilder element, std::uint32_t sequence) {
    const std::string text = std::to_string(number);
    boards.push_back(completeBoard("IOMODULE", "IO" + text, 0).element(std::move(element)));
    archive.add(entry("io" + text + ".bin").board("IO" + text, 1).sequence(sequence));
}

void RackTest::addFile(const std::string& name, const std::string& targetPath, std::uint32_t sequence) {
    archive.add(entry(name).target("NODE", targetPath).sequence(sequence));
}

void RackTest::serve() {
    if (hasNode) {
        target.add(hasCn ? ItemBuilder(node).add(item("CN")) : node);
    } else if (hasCn) {
        target.add(item("CN"));
    }
    for (const ItemBuilder& board : boards) {
        target.add(board);
    }
    target.serve();
    archive.write();
}

std::string faultReport(const std::string& call) {
    return "       ERROR 0x2fff (reported by Host PC):\n         Fault at " + call + ".\n";
}
