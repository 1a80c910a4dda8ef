#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace {

fs::path uniquePath() {
    static const unsigned process = std::random_device()();
    static std::atomic<unsigned> count{0};
    return fs::path(testing::TempDir()) / ("kv_" + std::to_string(process) + "_" + std::to_string(++count));
}

/// A test may have taken away the right to write.
void allowEverything(const fs::path& folder) {
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (const auto& entry : fs::recursive_directory_iterator(folder, ignored)) {
        if (!entry.is_symlink(ignored)) {
            fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
}

/// The path in a form whose length is not limited, which Windows wants for more than 260 characters.
fs::path unlimited(const fs::path& path) {
    if constexpr (fs::path::preferred_separator == '\\') {
        return {LR"(\\?\)" + fs::absolute(path).make_preferred().wstring()};
    }
    return path;
}

/// "/" between components.
std::string generic(std::string text) {
    std::replace(text.begin(), text.end(), static_cast<char>(fs::path::preferred_separator), '/');
    return text;
}

} // namespace

fs::path pathOfUtf8(std::string_view text) {
    return {std::u8string(text.begin(), text.end())};
}

std::string utf8Of(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

ScratchFolder::ScratchFolder() : path_(uniquePath()) {
    fs::create_directories(path_);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    allowEverything(unlimited(path_));
    fs::remove_all(unlimited(path_), ignored);
}

std::string ScratchFolder::write(const std::string& name, std::string_view content) const {
    const fs::path path = path_ / pathOfUtf8(name);
    std::error_code ignored;
    fs::create_directories(path.parent_path(), ignored);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    EXPECT_TRUE(file.good()) << "cannot write " << path;
    return utf8Of(path);
}

std::string ScratchFolder::read(const std::string& name) const {
    std::ifstream file(path_ / pathOfUtf8(name), std::ios::binary);
    EXPECT_TRUE(file.good()) << "cannot read " << path_ / pathOfUtf8(name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool ScratchFolder::has(const std::string& name) const {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path_ / pathOfUtf8(name), ignored));
}

std::vector<std::string> ScratchFolder::list() const {
    std::vector<std::string> names;
    const fs::path top = unlimited(path_);
    for (const auto& entry : fs::recursive_directory_iterator(top)) {
        names.push_back(generic(utf8Of(entry.path()).substr(utf8Of(top).size() + 1)));
    }
    std::sort(names.begin(), names.end());
    return names;
}
