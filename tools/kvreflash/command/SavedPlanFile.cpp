#include "SavedPlanFile.h"

#include "PathTexts.h"
#include "UserFiles.h"

#include <cerrno>
#include <fstream>
#include <system_error>

using namespace KvNReflasher;

namespace {

constexpr std::size_t largestPlan = std::size_t{256} << 20U;

/// Reads the whole file. Returns why that is not possible; empty: it was read.
std::string readWhole(const std::filesystem::path& path, std::string& text) {
    std::error_code ignored;
    if (std::filesystem::is_other(path, ignored)) { // to open a pipe is to wait
        return "it is not a regular file";
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open()) {
        return reasonOf(path, errno);
    }
    constexpr std::size_t pieceSize = 65536;
    std::string piece(pieceSize, '\0');
    while (text.size() <= largestPlan) {
        file.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        text.append(piece, 0, static_cast<std::size_t>(file.gcount()));
        if (!file) {
            return file.eof() ? std::string() : reasonOf(path, errno);
        }
    }
    return "it has more than 256 MiB";
}

} // namespace

std::optional<KvTSavedPlan> readPlanFile(const std::string& path, KvTVerdict& verdict) {
    std::string text;
    std::string reason = readWhole(filePath(path), text);
    std::optional<KvTSavedPlan> plan;
    if (reason.empty()) {
        plan = readSavedPlan(text, reason);
    }
    if (!plan) {
        verdict.add({KvEFailure::stale, "the plan " + quotedPath(path) + " cannot be used: " + reason});
    }
    return plan;
}
