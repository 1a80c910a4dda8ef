#include "FileWatch.h"

#include "ExhaustedMemory.h"
#include "WholeFiles.h"

const std::optional<KvCFileWatch::Content>& KvCFileWatch::contentOf(std::uint32_t fileIndex) {
    if (const auto known = contents_.find(fileIndex); known != contents_.end()) {
        return known->second;
    }
    return contents_.emplace(fileIndex, read(fileIndex)).first->second;
}

void KvCFileWatch::watch(std::uint32_t fileIndex) {
    (void)contentOf(fileIndex);
    watched_.insert(fileIndex);
}

bool KvCFileWatch::hasChanged(std::uint32_t fileIndex) const {
    return watched_.contains(fileIndex) &&
           withoutException(true, [&] { return contents_.at(fileIndex) != read(fileIndex); });
}

/// Nothing if the file cannot be read to its end.
std::optional<KvCFileWatch::Content> KvCFileWatch::read(std::uint32_t fileIndex) const {
    KvCSha256 digest;
    Content content;
    const bool isRead = readInPieces(archive_.pathOf(archive_.files()[fileIndex].name), [&](KvTBytes piece) {
        content.size += piece.size();
        digest.add(piece);
        return true;
    });
    content.digest = digest.digest();
    return isRead ? std::optional(content) : std::nullopt;
}
