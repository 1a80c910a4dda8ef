#pragma once

#include "KvCConsoleWriter.h"
#include "KvCPreparation.h"
#include "KvTCallbacks.h"
#include "KvTOptions.h"
#include "MessageCapture.h"

#include <string>

/// A target with the plan of an update, to be asked for what a session does not tell. Its messages are kept.
class PlannedTarget {
public:
    /// The mode of the options does not count.
    explicit PlannedTarget(const KvNReflasher::KvTOptions& options);

    /// Reads the archive, scans the target and plans. False when that failed or errors were collected; messages() says
    /// why.
    [[nodiscard]] bool prepare();

    /// What the preparation had to say, as bytes, the errors that were collected at its end.
    [[nodiscard]] const std::string& messages() const { return messages_.text(); }
    [[nodiscard]] KvCPreparation& preparation() { return preparation_; }

private:
    MessageCapture messages_;
    KvNReflasher::KvTOptions options_;
    KvTCallbacks callbacks_;
    KvCConsoleWriter writer_{callbacks_};
    KvCPreparation preparation_{writer_, options_};
};
