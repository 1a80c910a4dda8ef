// For the choice of a JSON library: parse_nlohmann FILE parses it with nlohmann/json, keeping the order of keys,
// parse_nlohmann --print FILE also prints it, indented by 4 blanks.

#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

int main(int argc, char** argv) {
    const bool print = argc == 3 && std::string_view(argv[1]) == "--print";
    if (argc != (print ? 3 : 2)) {
        return 64;
    }
    std::ifstream file(argv[argc - 1], std::ios::binary);
    const auto document = nlohmann::ordered_json::parse(file, nullptr, false);
    if (document.is_discarded()) {
        return 1;
    }
    if (print) {
        const std::string text = document.dump(4) + '\n';
        return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
    }
    return 0;
}
