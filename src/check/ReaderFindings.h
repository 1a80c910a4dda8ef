#pragma once

#include "ArchiveFindings.h"
#include "FindingList.h"
#include "FolderFiles.h"
#include "JsonOutline.h"
#include "MessageCapture.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Where a broken rule shows, and what to do.
struct KvTRuleAdvice {
    /// The value concerned; if it is missing, the one that it should be in.
    KvCOutlineValue place;
    std::string hint;
};

/// What to say of `finding` in the document `root`.
[[nodiscard]] KvTRuleAdvice adviceOn(const KvTArchiveFinding& finding, KvCOutlineValue root);

/// Collects what the archive's reader has to say, and lets it go on.
class KvCReaderFindings : public KvCArchiveFindings {
public:
    /// `messages` collects what the reader says, and nothing else.
    explicit KvCReaderFindings(const KvCMessageCapture& messages)
        : KvCArchiveFindings(messages.writer()), messages_(messages) {}

    /// Adds the findings so far to `list`, each with the reader's own words. `outline` and `text` are those of the
    /// description that was read, from `folder`.
    void addTo(KvCFindingList& list, const KvCJsonOutline& outline, std::string_view text,
               KvCFolderFiles& folder) const;

    /// True for an element of "files" that the reader passes over.
    [[nodiscard]] bool isSkipped(std::uint32_t entry) const;

protected:
    bool takeError(const KvTArchiveFinding& finding) override;
    void takeWarning(const KvTArchiveFinding& finding) override;

private:
    struct Taken {
        KvTArchiveFinding finding;
        /// Where its message begins in all messages.
        std::size_t messageBegin = 0;
    };

    [[nodiscard]] std::string_view messageOf(std::size_t index) const;

    const KvCMessageCapture& messages_;
    std::vector<Taken> taken_;
    /// In ascending order.
    std::vector<std::uint32_t> skippedEntries_;
};
