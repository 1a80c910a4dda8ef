#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

/// Something that is not a regular file.
struct OtherKindCase {
    const char* about;
    /// What it is called: "a pipe".
    const char* kind;
    /// Places it at a path; false if that fails.
    bool (*place)(const std::filesystem::path& path);
};

/// The pipe that a link at `path` leads to: not in the same folder, whose files a test may count.
inline std::filesystem::path pipeBeside(const std::filesystem::path& path) {
    return path.parent_path().string() + ".pipe";
}

/// Every kind that there is, directly and behind a link.
inline const std::array otherKindCases = {
    OtherKindCase{"a pipe", "a pipe",
                  [](const std::filesystem::path& path) { return mkfifo(path.c_str(), S_IRUSR | S_IWUSR) == 0; }},
    OtherKindCase{
        "a socket", "a socket",
        [](const std::filesystem::path& path) { return mknod(path.c_str(), S_IFSOCK | S_IRUSR | S_IWUSR, 0) == 0; }},
    OtherKindCase{"a folder", "a folder",
                  [](const std::filesystem::path& path) { return std::filesystem::create_directory(path); }},
    OtherKindCase{"an empty device", "a device",
                  [](const std::filesystem::path& path) { return symlink("/dev/null", path.c_str()) == 0; }},
    OtherKindCase{"an endless device", "a device",
                  [](const std::filesystem::path& path) { return symlink("/dev/zero", path.c_str()) == 0; }},
    OtherKindCase{"a link to a pipe", "a pipe", [](const std::filesystem::path& path) {
                      const std::filesystem::path pipe = pipeBeside(path);
                      return mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR) == 0 && symlink(pipe.c_str(), path.c_str()) == 0;
                  }}};

/// Removes what one of them has placed.
inline void removeOtherKind(const std::filesystem::path& path) {
    std::filesystem::remove(path);
    std::filesystem::remove(pipeBeside(path));
}

/// Ends the program if a test waits: nobody else would.
class Patience {
public:
    Patience() { alarm(seconds); }
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;
    ~Patience() { alarm(0); }

private:
    static constexpr unsigned seconds = 20;
};
