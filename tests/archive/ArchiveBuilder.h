#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// One text out of parts.
template <class... Parts>
[[nodiscard]] std::string joined(const Parts&... parts) {
    std::string result;
    (result.append(parts), ...);
    return result;
}

/// A JSON object as text, built member by member; values are JSON text.
class ObjectText {
public:
    using Member = std::pair<std::string, std::string>;

    ObjectText() = default;
    explicit ObjectText(std::vector<Member> members) : members_(std::move(members)) {}

    /// Replaces the value of `key` in its place or adds the key at the end.
    ObjectText& set(std::string_view key, std::string_view value);
    ObjectText& remove(std::string_view key);
    [[nodiscard]] std::string text() const;

private:
    std::vector<Member> members_;
};

/// An entry that is accepted and whose checksum is known: name "a.bin", sequence 1, board type "QB", id 5.
[[nodiscard]] ObjectText goodEntry();

/// An element of "boards" that is accepted: board type "QB", id 5.
[[nodiscard]] ObjectText goodBoard();

/// goodEntry() with "boards" that hold `elements` (JSON texts separated by commas) instead of its board type and id.
[[nodiscard]] ObjectText entryWithBoards(std::string_view elements);

/// Writes archive descriptions: the "info" block is complete and right, and "files" is empty, until told otherwise.
class ArchiveBuilder {
public:
    ArchiveBuilder();

    /// Sets a member of "info".
    ArchiveBuilder& info(std::string_view key, std::string_view value);
    ArchiveBuilder& withoutInfo(std::string_view key);
    /// Sets a member of the root, "info" and "files" included.
    ArchiveBuilder& root(std::string_view key, std::string_view value);
    ArchiveBuilder& withoutRoot(std::string_view key);
    /// Adds an element to "files".
    ArchiveBuilder& entry(const ObjectText& entry) { return addElement(entry.text()); }
    ArchiveBuilder& entry(std::string_view element) { return addElement(std::string(element)); }

    [[nodiscard]] std::string text() const;

private:
    ArchiveBuilder& addElement(std::string element);

    ObjectText info_;
    std::vector<std::string> entries_;
    /// What was set or removed at the root last; removed members have no text.
    std::vector<std::pair<std::string, std::string>> root_;
};
