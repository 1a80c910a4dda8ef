#include "FileWatch.h"

#include "ExhaustedMemory.h"
#include "WholeFiles.h"

void KvCFileWatch::note(std::uint32_t fileIndex) {
    if (!noted_.contains(fileIndex)) {
        noted_[fileIndex] = digestOf(fileIndex);
    }
}

bool KvCFileWatch::hasChanged(std::uint32_t fileIndex) const {
    const auto noted = noted_.find(fileIndex);
    return noted != noted_.end() && withoutException(true, [&] { return noted->second != digestOf(fileIndex); });
}

/// Nothing if the file cannot be read to its end.
std::optional<KvTSha256> KvCFileWatch::digestOf(std::uint32_t fileIndex) const {
    KvCSha256 digest;
    const bool isRead = readInPieces(archive_.pathOf(archive_.files()[fileIndex].name), [&digest](KvTBytes piece) {
        digest.add(piece);
        return true;
    });
    return isRead ? std::optional(digest.digest()) : std::nullopt;
}
