#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A folder of this process below the system's temporary one, removed at the end. Names and texts are ASCII.
class FuzzFolder {
public:
    FuzzFolder();
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;
    ~FuzzFolder();

    [[nodiscard]] std::string text() const { return path_.string(); }
    [[nodiscard]] std::wstring wideText() const { return path_.wstring(); }
    [[nodiscard]] std::wstring wideText(std::string_view name) const { return (path_ / name).wstring(); }
    [[nodiscard]] std::string text(std::string_view name) const { return (path_ / name).string(); }

    /// Writes a file of the folder anew; ends the program when that is not possible.
    void write(std::string_view name, std::string_view content) const;
    /// Removes a file, or a folder with all that is in it, when it is there.
    void remove(std::string_view name) const;

private:
    std::filesystem::path path_;
};
