// Runs a fuzzer's entry point once over inputs that are kept, in any build.
//
// usage: NAME_replay FILE-OR-FOLDER...

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

/// The file at `path`, or the files in the folder at `path`, sorted.
std::vector<fs::path> filesAt(const fs::path& path) {
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// False when the file cannot be read.
bool replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "%s cannot be read.\n", path.string().c_str());
        return false;
    }
    // The last line before an abort names the input.
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout);
    static_cast<void>(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    return true;
}

int replayAll(const std::vector<std::string>& paths) {
    std::size_t count = 0;
    bool areRead = true;
    for (const std::string& path : paths) {
        for (const fs::path& file : filesAt(path)) {
            areRead = replay(file) && areRead;
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return areRead && count > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[]) {
    try {
        return replayAll({argv + 1, argv + argc});
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "%s\n", fault.what());
        return 1;
    }
}
