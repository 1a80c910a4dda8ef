#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// The path that UTF-8 text names, "/" between components, and the text of a path.
[[nodiscard]] std::filesystem::path pathOfUtf8(std::string_view text);
[[nodiscard]] std::string utf8Of(const std::filesystem::path& path);

/// A folder of its own in the tests' scratch folder, removed at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;
    ~ScratchFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    /// In UTF-8, as the names of the following.
    [[nodiscard]] std::string text() const { return utf8Of(path_); }

    /// Writes a file below the folder, its folders included, and returns its path.
    // NOLINTNEXTLINE(modernize-use-nodiscard): mostly called for its effect
    std::string write(const std::string& name, std::string_view content) const;
    /// The content of a file below the folder; a test failure and an empty text when there is none.
    [[nodiscard]] std::string read(const std::string& name) const;
    [[nodiscard]] bool has(const std::string& name) const;
    /// The paths below the folder, sorted, "/" between components.
    [[nodiscard]] std::vector<std::string> list() const;

private:
    std::filesystem::path path_;
};
