#include "BenchData.h"

#include "KvCVersion.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <system_error>

namespace {

constexpr std::size_t elementsOfBoard = 8;
/// Every so manieth entry of the shapes with long lists is a long one, and it lists so many.
constexpr std::size_t longList = 1000;
constexpr const char* offeredVersion = "23.2.1";
constexpr const char* installedVersion = "22.7";

bool isLong(KvEArchiveShape shape, std::size_t index) {
    const bool hasLongLists = shape == KvEArchiveShape::thousandBoardTypes || shape == KvEArchiveShape::thousandBoards;
    return hasLongLists && index % longList == 0;
}

std::string number(std::size_t value) {
    return std::to_string(value);
}

std::uint32_t number32(std::size_t value) {
    return static_cast<std::uint32_t>(value);
}

std::size_t identifierOf(std::size_t index) {
    return index % elementsOfBoard + 1;
}

std::string boardTypeOf(KvEArchiveShape shape, std::size_t index) {
    if (shape == KvEArchiveShape::oneBoardType) {
        return "QB4000";
    }
    return "QB" + number(4000 + index / elementsOfBoard);
}

/// A board type of an entry with a long list.
std::string listedType(std::size_t index, std::size_t position) {
    return "QL" + number(index) + "x" + number(position);
}

/// The members that tell which boards a long entry is for.
std::string longMembers(KvEArchiveShape shape, std::size_t index) {
    const bool typesOnly = shape == KvEArchiveShape::thousandBoardTypes;
    std::string text = typesOnly ? R"("boardType": [)" : R"("boards": [)";
    for (std::size_t position = 0; position < longList; ++position) {
        text.append(position == 0 ? "" : ", ").append(typesOnly ? "\"" : R"({"boardType": ")");
        text.append(listedType(index, position)).append(typesOnly ? "\"" : R"(", "id": )");
        text.append(typesOnly ? "" : number(identifierOf(index)) + "}");
    }
    text += "]";
    return typesOnly ? text + R"(, "id": )" + number(identifierOf(index)) : text;
}

/// The members that tell what an entry is for.
std::string targetMembers(KvEArchiveShape shape, std::size_t index) {
    if (isLong(shape, index)) {
        return longMembers(shape, index);
    }
    std::string text = R"("boardType": ")" + boardTypeOf(shape, index) + R"(", "id": )" + number(identifierOf(index));
    if (shape == KvEArchiveShape::oneBoardType) {
        return text + R"(, "hwCompatibilityId": )" + number(index);
    }
    return text + R"(, "boardVariant": ["A", "B", null], "boardId": [6, 7], "hwCompatibilityId": [2, 3, 4])";
}

std::string entryText(KvEArchiveShape shape, std::size_t index) {
    std::string text = R"(        {
            "comment": "Boot loaders are never downgraded. Made for the racks of the second series.",
            "name": ")";
    text.append(updateFileName(index)).append(R"(", "sequence": )").append(number(index % 5 * 10));
    text.append(",\n            ").append(targetMembers(shape, index));
    text.append(R"(, "version": ")").append(offeredVersion).append("\"");
    if (shape != KvEArchiveShape::withoutChecksums) {
        text.append(R"(, "checksumCrc32": )").append(number(1000000 + index));
    }
    return text.append(R"(, "mode": "standard")").append("\n        }");
}

void drop(const std::wstring& message) {
    benchmark::DoNotOptimize(message.data());
}

KvTUpdateElement elementFor(KvEArchiveShape shape, std::size_t index) {
    const bool upToDate = index % 2 == 0;
    KvTUpdateElement element;
    element.index = number32(index);
    element.elementId = number32(identifierOf(index));
    element.serialNumber = number32(10000 + index / elementsOfBoard);
    element.boardType = KvCString(isLong(shape, index) ? listedType(index, longList - 1) : boardTypeOf(shape, index));
    element.boardName = element.boardType;
    element.displayName = KvCString(std::string(element.boardName.view()) + ", Firmware");
    if (shape == KvEArchiveShape::oneBoardType) {
        element.hwCompatibilityId = number32(index);
    } else if (!isLong(shape, index)) {
        element.boardVariant = "B";
        element.boardId = 7;
        element.hwCompatibilityId = 3;
    }
    element.valid = true;
    element.active = true;
    element.hasChecksum = true;
    element.checksumCrc32 = upToDate ? number32(1000000 + index) : 1;
    element.version = KvCVersion(upToDate ? offeredVersion : installedVersion);
    return element;
}

std::string elementText(std::size_t index) {
    return R"({"id": "UPDATE_ELEMENT", "parameters": {"ID": )" + number(identifierOf(index)) +
           R"(, "NAME": "UserFirmware", "VERSION": "22.7", "VERSION_HISTORY": "22.7, 21.0", "CONFIGURATION": 0,)"
           R"( "VALID": 1, "ACTIVE": 1, "HW_COMPATIBILITY_ID": 3, "CHECKSUM_CRC32": )" +
           number(index) + "}}";
}

/// The board of the elements `begin` to `end`.
std::string boardText(std::size_t begin, std::size_t end) {
    std::string text = R"({"id": "IOMODULE", "parameters": {"PRODUCT/BOARD_TYPE": ")";
    text.append(boardTypeOf(KvEArchiveShape::usual, begin)).append(R"(", "PRODUCT/VARIANT": "B", "PRODUCT/ID": 7,)");
    text.append(R"( "PRODUCT/SLOT_COUNT": 1, "SLOT": 3, "PRODUCT/SERIAL_NUMBER": )").append(number(10000 + begin));
    text.append(R"(}, "items": [{"id": "UPDATE_INFO", "items": [)");
    for (std::size_t index = begin; index < end; ++index) {
        text.append(index == begin ? "" : ", ").append(elementText(index));
    }
    return text.append("]}]}");
}

} // namespace

void atAllSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->RangeMultiplier(10)->Range(100, 100000)->Unit(benchmark::kMicrosecond)->Complexity();
}

void giveUp(std::string_view message) {
    std::fprintf(stderr, "kv_bench: %.*s\n", static_cast<int>(message.size()), message.data());
    std::exit(EXIT_FAILURE);
}

BenchFolder::BenchFolder()
    : path_(std::filesystem::temp_directory_path() / ("kv_bench_" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path_);
}

BenchFolder::~BenchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void BenchFolder::write(const std::string& name, std::string_view bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file.fail()) {
        giveUp("cannot write " + (path_ / name).string());
    }
}

std::string updateFileName(std::size_t index) {
    return "qb-firmware-" + number(index) + ".kfw";
}

std::string descriptionText(KvEArchiveShape shape, std::size_t count) {
    std::string text = R"({
    "info": {
        "formatVersion": "1.0", "archiveVersion": "23.2.1", "productName": "QB line", "archiveName": "Summer release"
    },
    "files": [
)";
    for (std::size_t index = 0; index < count; ++index) {
        text.append(index == 0 ? "" : ",\n").append(entryText(shape, index));
    }
    return text.append("\n    ]\n}\n");
}

SilentWriter::SilentWriter() {
    callbacks_.message = drop;
}

LoadedArchive::LoadedArchive(KvEArchiveShape shape, std::size_t count) {
    const BenchFolder folder;
    folder.write("archive.json", descriptionText(shape, count));
    KvCArchiveFindings findings(writer());
    if (!archive_.parseDescription((folder.path() / "archive.json").wstring(), findings) ||
        archive_.files().size() != count) {
        giveUp("an archive was refused");
    }
}

std::list<KvTUpdateElement> elementsFor(KvEArchiveShape shape, std::size_t count) {
    std::list<KvTUpdateElement> elements;
    for (std::size_t index = 0; index < count; ++index) {
        elements.push_back(elementFor(shape, index));
    }
    return elements;
}

std::string targetText(std::size_t count) {
    std::string text = R"({"addresses": ["127.0.0.1"], "inventory": {"id": "ROOT", "items": [)";
    for (std::size_t begin = 0; begin < count; begin += elementsOfBoard) {
        text.append(begin == 0 ? "" : ",\n").append(boardText(begin, std::min(begin + elementsOfBoard, count)));
    }
    return text.append("]}}\n");
}
