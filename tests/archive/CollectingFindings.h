#pragma once

#include "ArchiveFindings.h"

#include <cstddef>
#include <limits>
#include <vector>

/// Keeps what is found and goes on after errors, as a checking tool does; up to a number of errors when one is given.
class CollectingFindings : public KvCArchiveFindings {
public:
    explicit CollectingFindings(const KvCConsoleWriter& writer,
                                std::size_t lastError = std::numeric_limits<std::size_t>::max())
        : KvCArchiveFindings(writer), lastError_(lastError) {}

    [[nodiscard]] const std::vector<KvTArchiveFinding>& errors() const { return errors_; }
    [[nodiscard]] const std::vector<KvTArchiveFinding>& warnings() const { return warnings_; }

protected:
    bool takeError(const KvTArchiveFinding& finding) override {
        errors_.push_back(finding);
        return errors_.size() < lastError_;
    }
    void takeWarning(const KvTArchiveFinding& finding) override { warnings_.push_back(finding); }

private:
    std::size_t lastError_;
    std::vector<KvTArchiveFinding> errors_;
    std::vector<KvTArchiveFinding> warnings_;
};
