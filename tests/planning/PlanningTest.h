#pragma once

#include "KeptMessages.h"
#include "KvCErrorManager.h"
#include "KvCFirmwareArchive.h"
#include "KvCTargetInventory.h"
#include "KvCUpdatePlanner.h"
#include "KvTOptions.h"
#include "PlanningBuilders.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

/// An archive and a target's elements, made with few words, and the planner that brings them together. Every message
/// is kept. Each test ends with nothing held of the platform.
class PlanningTest : public testing::Test {
protected:
    void TearDown() override;

    /// The archive has these entries (see filesOf()).
    void archiveHas(const std::vector<std::string>& entries) { archive_.setFiles(filesOf(entries)); }
    /// The archive reads these entries, of which it may ignore some.
    void archiveReads(const std::vector<std::string>& entries) { readEntries(archive_, messages_.writer(), entries); }
    void archiveHasFiles(std::vector<KvTArchiveFile> files) { archive_.setFiles(std::move(files)); }
    /// Adds an element to the target's.
    void targetHas(const ElementBuilder& element) { targetHas(element.build()); }
    void targetHas(const KvTUpdateElement& element) { inventory_.addElement(element); }
    /// The target takes files that none of its elements stands for; their elements are made after this one.
    void targetTakesFiles(const KvTUpdateElement& fileSystemTemplate);
    void targetTakesFiles(const ElementBuilder& fileSystemTemplate) { targetTakesFiles(fileSystemTemplate.build()); }

    /// The target has no elements, nor takes files.
    void forgetTarget() { inventory_.clear(); }

    void plan() { planner_.plan(); }

    /// The element at a position of the list; a test failure when there is none.
    [[nodiscard]] const KvTUpdateElement& elementAt(std::size_t position);
    /// Of each element in the order of the list.
    [[nodiscard]] std::vector<std::uint32_t> archiveFileIndices() const;
    [[nodiscard]] std::vector<std::uint32_t> phases() const;
    /// Of each entry in the order of the description.
    [[nodiscard]] std::vector<std::uint32_t> matchCounts() const;

    [[nodiscard]] const KvCFirmwareArchive& archive() const { return archive_; }
    [[nodiscard]] const std::vector<KvTArchiveFile>& files() const { return archive_.files(); }
    [[nodiscard]] const KvCTargetInventory& inventory() const { return inventory_; }
    [[nodiscard]] const std::list<KvTUpdateElement>& elements() const { return inventory_.elements(); }
    /// The plan of an element, to be changed.
    [[nodiscard]] KvTElementPlan& planOf(std::uint32_t index) { return inventory_.planOf(index); }
    [[nodiscard]] const KvCUpdatePlanner& planner() const { return planner_; }
    [[nodiscard]] const KvCConsoleWriter& writer() const { return messages_.writer(); }
    [[nodiscard]] KvNReflasher::KvTOptions& options() { return options_; }

    /// What was printed so far, as bytes.
    [[nodiscard]] static std::string messages();
    /// The bytes that `print` prints.
    [[nodiscard]] static std::string printed(const std::function<void()>& print);

private:
    KeptMessages messages_;
    KvNReflasher::KvTOptions options_{};
    KvCFirmwareArchive archive_{messages_.writer(), options_};
    KvCTargetInventory inventory_{messages_.writer(), options_, KvCErrorManager::getInstance()->getMasterErrorList()};
    KvCUpdatePlanner planner_{options_, archive_, inventory_};
};
