#pragma once

#include "EntryMatching.h"
#include "KvTArchiveFile.h"
#include "KvTUpdateElement.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Finds the archive entry that is meant for an element without trying every entry: by board type and by element
/// identifier or target path. The result is that of trying the entries in the order of the description.
class EntryIndex {
public:
    /// `files` must stay as it is while the index lives.
    explicit EntryIndex(const std::vector<KvTArchiveFile>& files);

    /// Index of the first entry that is meant for `element`, or noArchiveFile.
    [[nodiscard]] std::uint32_t find(const KvTUpdateElement& element) const;

private:
    /// What an element and a selection must have in common. File-system elements that take any path share one key,
    /// under which every target path of the board type is listed.
    struct Key {
        std::string_view boardType;
        bool isFileSystemElement = false;
        std::uint32_t id = 0;
        std::string_view targetPath;
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };
    struct Candidate {
        std::uint32_t file;
        KvTEntrySelection selection;
    };

    void addFile(const KvTArchiveFile& file, std::uint32_t fileIndex);
    void addSelection(std::string_view boardType, const Candidate& candidate);
    [[nodiscard]] static Key keyOf(const KvTUpdateElement& element);

    std::unordered_map<Key, std::vector<Candidate>, KeyHash> candidates_;
};
