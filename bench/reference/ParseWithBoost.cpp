// What reading a JSON file costs at least: parse_boost FILE parses it with Boost.JSON, parse_boost --print FILE also
// prints it, indented by 4 blanks.

#include <boost/json/src.hpp>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace {

namespace json = boost::json;

void beginLine(std::string& text, std::size_t depth) {
    text.append("\n").append(4 * depth, ' ');
}

void append(std::string& text, const json::value& value, std::size_t depth);

/// Objects and arrays: what is between the brackets, one item a line.
template <class Items, class AppendItem>
void appendItems(std::string& text, const Items& items, std::size_t depth, AppendItem appendItem) {
    const char* separator = "";
    for (const auto& item : items) {
        text += separator;
        beginLine(text, depth + 1);
        appendItem(item);
        separator = ",";
    }
    if (!items.empty()) {
        beginLine(text, depth);
    }
}

void append(std::string& text, const json::value& value, std::size_t depth) {
    if (const json::object* object = value.if_object()) {
        text += '{';
        appendItems(text, *object, depth, [&](const json::key_value_pair& member) {
            text.append(json::serialize(member.key())).append(": ");
            append(text, member.value(), depth + 1);
        });
        text += '}';
    } else if (const json::array* array = value.if_array()) {
        text += '[';
        appendItems(text, *array, depth, [&](const json::value& item) { append(text, item, depth + 1); });
        text += ']';
    } else {
        text += json::serialize(value);
    }
}

std::string readFile(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string text(file ? static_cast<std::size_t>(file.tellg()) : 0, '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    return text;
}

} // namespace

int main(int argc, char** argv) {
    const bool print = argc == 3 && std::string_view(argv[1]) == "--print";
    if (argc != (print ? 3 : 2)) {
        return 64;
    }
    json::monotonic_resource memory;
    json::error_code error;
    const json::value document = json::parse(readFile(argv[argc - 1]), error, &memory);
    if (error) {
        return 1;
    }
    if (print) {
        std::string text;
        append(text, document, 0);
        text += '\n';
        return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
    }
    return 0;
}
