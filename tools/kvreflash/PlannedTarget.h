#pragma once

#include "KvCPreparation.h"
#include "KvTOptions.h"
#include "MessageCapture.h"

#include <memory>
#include <string>

/// A target with the plan of an update, to be asked for what a session does not tell. Its messages are kept, its errors
/// forgotten at its end, so that a session that follows does not report them.
class PlannedTarget {
public:
    /// The mode of the options does not count, unless another one is asked for.
    explicit PlannedTarget(KvNReflasher::KvTOptions options, KvNReflasher::KvEMode mode = KvNReflasher::showUpdatePlan);
    PlannedTarget(const PlannedTarget&) = delete;
    PlannedTarget& operator=(const PlannedTarget&) = delete;
    ~PlannedTarget();

    /// Reads the archive, scans the target and plans, as far as the mode asks for it. False when that failed;
    /// messages() says why.
    [[nodiscard]] bool plan();
    /// Adds the errors that were collected so far to the messages; false when there are none.
    [[nodiscard]] bool reportErrors();
    /// Plans. False when that failed or errors were collected, so that the plan may be incomplete.
    [[nodiscard]] bool prepare() { return plan() && !reportErrors(); }

    /// What the preparation had to say, as bytes.
    [[nodiscard]] const std::string& messages() const { return messages_.text(); }
    [[nodiscard]] KvCPreparation& preparation() { return *preparation_; }

private:
    MessageCapture messages_;
    KvNReflasher::KvTOptions options_;
    std::unique_ptr<KvCPreparation> preparation_ = std::make_unique<KvCPreparation>(messages_.writer(), options_);
};
