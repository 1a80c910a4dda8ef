#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

/// A file of its own in the tests' scratch folder, removed at the end.
class ScratchFile {
public:
    explicit ScratchFile(std::string_view content) : path_(uniquePath()) {
        const Stream stream = open("wb");
        if (stream == nullptr || std::fwrite(content.data(), 1, content.size(), stream.get()) != content.size()) {
            ADD_FAILURE() << "cannot write " << path_;
        }
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile(ScratchFile&&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ScratchFile& operator=(ScratchFile&&) = delete;
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    struct Closer {
        void operator()(std::FILE* stream) const { static_cast<void>(std::fclose(stream)); }
    };
    using Stream = std::unique_ptr<std::FILE, Closer>;

    /// Null when it cannot be opened.
    [[nodiscard]] Stream open(const char* mode) const { return Stream(std::fopen(path_.c_str(), mode)); }
    [[nodiscard]] const std::string& path() const { return path_; }

private:
    static std::string uniquePath() {
        static const unsigned process = std::random_device()();
        static std::atomic<unsigned> count{0};
        return testing::TempDir() + "kv_scratch_" + std::to_string(process) + "_" + std::to_string(++count);
    }

    std::string path_;
};
