#include "SessionQueries.h"

#include <iterator>
#include <memory>

namespace {

/// Takes over the array that a query of the session has made.
template <typename Record>
std::vector<Record> recordsOf(KvIReflasher& session, void (KvIReflasher::*query)(Record*&, std::uint32_t&)) {
    Record* records = nullptr;
    std::uint32_t count = 0;
    (session.*query)(records, count);
    const std::unique_ptr<Record[]> owned(records);
    return {std::make_move_iterator(records), std::make_move_iterator(records + count)};
}

} // namespace

KvTArchiveTexts archiveTextsOf(KvIReflasher& session) {
    KvTArchiveTexts texts;
    session.getArchiveInfo(texts.name, texts.version, texts.productName, texts.formatVersion, texts.variant);
    return texts;
}

std::vector<KvNReflasher::KvTUpdateElementInfo> elementsOf(KvIReflasher& session) {
    return recordsOf(session, &KvIReflasher::getUpdateElements);
}

std::vector<KvNReflasher::KvTArchiveFileInfo> filesOf(KvIReflasher& session) {
    return recordsOf(session, &KvIReflasher::getArchiveFiles);
}
