#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

/// A file that gets a new content as a whole, at once, or stays as it was.
///
/// Until then the content is in a temporary file beside it, .kvreflash-*.tmp, which nobody else writes to: of several
/// tools with one name the last one wins. A link is followed once, when the file is opened. Pipes, devices, and files
/// of a standard stream are written to as they are. Errors are values of errno; 0: none.
class ReplacedFile {
public:
    ReplacedFile() = default;
    ReplacedFile(ReplacedFile&& other) noexcept;
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;
    ReplacedFile& operator=(ReplacedFile&&) = delete;
    /// Discards what was not committed.
    ~ReplacedFile() { discard(); }

    /// Creates the temporary file and reserves a megabyte for it, if there is nothing that is known to keep the file
    /// from being replaced. A pipe without a reader is refused (ENXIO).
    [[nodiscard]] int open(const std::filesystem::path& path);
    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

    /// Adds to what commit() will make the content of the file.
    [[nodiscard]] int append(std::string_view content);
    /// Makes what was appended, and `content` behind it, the content of the file, which is on the disk then, and closes
    /// it. If that fails, nothing but the earlier file is left; only of a pipe or device some may have been written.
    [[nodiscard]] int commit(std::string_view content);
    /// Closes the file and leaves it as it was.
    void discard();

private:
    [[nodiscard]] int createTemporary(bool replacesFile);
    [[nodiscard]] int replace();

    /// What is replaced, or written to as it is.
    std::filesystem::path file_;
    /// Empty if there is none.
    std::filesystem::path temporary_;
    int descriptor_ = -1;
    /// Bytes that were written so far.
    std::uint64_t size_ = 0;
};

/// Removes the temporary files of all threads, before the process ends without destructors.
void removeTemporaryFiles();
