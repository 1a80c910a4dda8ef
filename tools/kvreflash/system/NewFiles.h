#pragma once

#include <cstdint>
#include <filesystem>

// What it takes to replace a file as a whole. Errors are values of errno, 0 for none; descriptors are negative, and
// errno states why, if there is none.

/// What is written if something is written to a path.
struct WrittenPlace {
    /// The file that is replaced; no link.
    std::filesystem::path path;
    /// False for a pipe, a device, and the file of a standard stream: they are written to as they are.
    bool isReplaced = true;
    /// There is such a file.
    bool exists = false;
};

/// Finds it, through links. An error says that a file cannot be there, or that the one that is there cannot be
/// replaced; a folder is one (EISDIR), and so is a link that leads nowhere (ENOENT).
[[nodiscard]] int findWrittenPlace(const std::filesystem::path& path, WrittenPlace& place);

/// Opens what is written to as it is; a pipe that nobody reads is refused (ENXIO), a full device, too. Returns the
/// descriptor.
[[nodiscard]] int openAsItIs(const std::filesystem::path& path);

/// Creates a file for binary writing under a name that nothing has, not even a link. Returns the descriptor.
[[nodiscard]] int createNewFile(const std::filesystem::path& path);

/// Gives a new file the rights that an existing one has, and its owner if that is allowed.
[[nodiscard]] int takeRights(int descriptor, const std::filesystem::path& existing);

/// Makes the file so long, as far as the process may, so that a full disk shows. What the system cannot reserve is no
/// error.
[[nodiscard]] int reserveRoom(int descriptor, std::uint64_t size);

/// Cuts the file to its size, has it on the disk, and closes it in any case.
[[nodiscard]] int finishFile(int descriptor, std::uint64_t size);

/// Closes it; whatever is lost is lost.
void closeFile(int descriptor);

/// Gives a file the name of another one in the same folder, which it replaces; the name is on the disk then.
[[nodiscard]] int replaceFile(const std::filesystem::path& file, const std::filesystem::path& replaced);
