#include "ArchiveBuilder.h"

#include <algorithm>

ObjectText& ObjectText::set(std::string_view key, std::string_view value) {
    const auto member = std::find_if(members_.begin(), members_.end(), [&](const Member& m) { return m.first == key; });
    if (member != members_.end()) {
        member->second = value;
    } else {
        members_.emplace_back(key, value);
    }
    return *this;
}

ObjectText& ObjectText::remove(std::string_view key) {
    std::erase_if(members_, [&](const Member& member) { return member.first == key; });
    return *this;
}

std::string ObjectText::text() const {
    std::string result = "{";
    for (const auto& [key, value] : members_) {
        result.append(result.size() > 1 ? ", " : "").append("\"").append(key).append("\": ").append(value);
    }
    return result.append("}");
}

ObjectText goodEntry() {
    return ObjectText(
        {{"name", R"("a.bin")"}, {"sequence", "1"}, {"boardType", R"("QB")"}, {"id", "5"}, {"checksumCrc32", "77"}});
}

ObjectText goodBoard() {
    return ObjectText({{"boardType", R"("QB")"}, {"id", "5"}});
}

ObjectText entryWithBoards(std::string_view elements) {
    return goodEntry().remove("boardType").remove("id").set("boards", joined("[", elements, "]"));
}

ArchiveBuilder::ArchiveBuilder()
    : info_({{"formatVersion", R"("1.0")"},
             {"archiveVersion", R"("23.2.1")"},
             {"productName", R"("Rack firmware")"},
             {"archiveVariant", R"("standard")"},
             {"archiveName", R"("Rack 23")"}}) {}

ArchiveBuilder& ArchiveBuilder::info(std::string_view key, std::string_view value) {
    info_.set(key, value);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::withoutInfo(std::string_view key) {
    info_.remove(key);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::root(std::string_view key, std::string_view value) {
    root_.emplace_back(key, value);
    return *this;
}

ArchiveBuilder& ArchiveBuilder::withoutRoot(std::string_view key) {
    return root(key, "");
}

ArchiveBuilder& ArchiveBuilder::addElement(std::string element) {
    entries_.push_back(std::move(element));
    return *this;
}

std::string ArchiveBuilder::text() const {
    std::string files = "[";
    for (const std::string& entry : entries_) {
        files.append(files.size() > 1 ? ",\n" : "").append(entry);
    }
    files.append("]");
    ObjectText document({{"info", info_.text()}, {"files", files}});
    for (const auto& [key, value] : root_) {
        if (value.empty()) {
            document.remove(key);
        } else {
            document.set(key, value);
        }
    }
    return document.text();
}
