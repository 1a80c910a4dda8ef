#include "FuzzFolder.h"

#include "Property.h"

#include <fstream>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

FuzzFolder::FuzzFolder()
    : path_(fs::temp_directory_path() /
            ("kv_fuzz_" + std::to_string(std::random_device()()) + "_" + std::to_string(std::random_device()()))) {
    require(fs::create_directories(path_), "The scratch folder is new.");
}

FuzzFolder::~FuzzFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

void FuzzFolder::write(std::string_view name, std::string_view content) const {
    std::ofstream file(path_ / name, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    require(file.good(), "A file of the scratch folder can be written.");
}

void FuzzFolder::remove(std::string_view name) const {
    std::error_code ignored;
    fs::remove_all(path_ / name, ignored);
}
