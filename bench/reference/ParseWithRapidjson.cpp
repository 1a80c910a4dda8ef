// What reading a JSON file costs at least: parse_rapidjson FILE parses it with RapidJSON, parse_rapidjson --print FILE
// also prints it, indented by 4 blanks.

#include <rapidjson/document.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/prettywriter.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

namespace {

std::string readFile(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string text(file ? static_cast<std::size_t>(file.tellg()) : 0, '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

bool printDocument(const rapidjson::Document& document) {
    std::array<char, 65536> buffer{};
    rapidjson::FileWriteStream stream(stdout, buffer.data(), buffer.size());
    rapidjson::PrettyWriter<rapidjson::FileWriteStream> writer(stream);
    writer.SetIndent(' ', 4);
    if (!document.Accept(writer)) {
        return false;
    }
    stream.Put('\n');
    stream.Flush();
    return std::ferror(stdout) == 0;
}

} // namespace

int main(int argc, char** argv) {
    const bool print = argc == 3 && std::string_view(argv[1]) == "--print";
    if (argc != (print ? 3 : 2)) {
        return 64;
    }
    const std::string text = readFile(argv[argc - 1]);
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (document.HasParseError()) {
        return 1;
    }
    return !print || printDocument(document) ? 0 : 1;
}
