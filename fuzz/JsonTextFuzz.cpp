// JSON text: parsing, from memory and from a file, and writing.

#include "FuzzFolder.h"
#include "KvNJson.h"
#include "Property.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace {

using KvNJson::json;
using KvNJson::jsonView;

struct Closer {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

json parseFile(const FuzzFolder& folder, std::string_view text) {
    folder.write("text.json", text);
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(folder.text("text.json").c_str(), "rb"));
    require(file != nullptr, "A file that was written can be opened.");
    return json::parse(file.get());
}

/// A value is of one kind, and what it has is found by index and by key.
void checkValue(jsonView value) {
    const int kinds = int(value.is_null()) + int(value.is_boolean()) + int(value.is_string()) + int(value.is_array()) +
                      int(value.is_object()) + int(value.is_number());
    require(value.is_valid() && kinds == 1, "A value is of one kind.");
    require(!value.is_number_unsigned() || value.is_number(), "An unsigned number is a number.");
    require(value.is_array() || value.is_object() || value.size() == 0, "Only arrays and objects have parts.");
    require(!value.at(value.size()).is_valid(), "There is nothing behind the last part.");
    for (std::size_t index = 0; index < value.size(); ++index) {
        const jsonView part = value.at(index);
        checkValue(part);
        // A key that is given twice has one value.
        require(!value.is_object() || value.find(value.key(index)).is_valid(), "A member is found by its key.");
    }
}

void checkWritten(const json& value, int indent, bool isAscii) {
    const std::string text = value.dump(indent, ' ', isAscii);
    const json again = json::parse(text);
    require(!again.is_invalid(), "A value is written as JSON.");
    require(again.dump(indent, ' ', isAscii) == text, "A value that was written is written the same again.");
    require(again.dump() == value.dump(), "A value that was written is the same value.");
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        require(!isAscii || code < 0x80, "ASCII is ASCII.");
        require(code >= 0x20 || (byte == '\n' && indent >= 0), "Control characters are escaped.");
    }
}

void checkRefused(const std::string& reason, std::size_t offset, std::size_t size) {
    require(!reason.empty() && offset <= size, "Text that is no JSON is told why, and where.");
}

} // namespace

/// The text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const FuzzFolder folder;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string reason;
    std::size_t offset = size + 1;
    const json value = json::parse(text, &reason, &offset);
    const json fromFile = parseFile(folder, text);
    require(value.is_invalid() == fromFile.is_invalid() && value.dump() == fromFile.dump(),
            "Text is read the same from memory and from a file.");
    if (value.is_invalid()) {
        checkRefused(reason, offset, size);
        return 0;
    }
    checkValue(value.view());
    checkWritten(value, -1, false);
    checkWritten(value, 2, true);
    json copy;
    copy = value;
    require(copy.dump() == value.dump(), "A copy is the same value.");
    return 0;
}
