#include "TargetPath.h"

#include "JsonPlace.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

constexpr std::array<std::string_view, 3> rootComponents{"mnt", "cn", "cfdrive"};

bool isHarmless(char character) {
    const auto byte = static_cast<unsigned char>(character);
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deleteCharacter = 0x7F;
    return byte >= firstPrintable && byte != deleteCharacter && character != '\\' && character != ':';
}

bool isAcceptable(std::string_view component) {
    return component != ".." && std::all_of(component.begin(), component.end(), isHarmless);
}

Failure refusedPath(std::string_view path, const std::string& reason) {
    return {EmulationErrors::fileAccess,
            "The target refuses the path " + JsonValues::quoted(path) + ": " + reason + "."};
}

} // namespace

std::vector<std::string> splitComponents(std::string_view path) {
    std::vector<std::string> components;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        if (!component.empty() && component != ".") {
            components.emplace_back(component);
        }
        path.remove_prefix(std::min(component.size() + 1, path.size()));
    }
    return components;
}

std::string joinComponents(const std::vector<std::string>& components) {
    std::string path;
    for (const std::string& component : components) {
        path += path.empty() ? "" : "/";
        path += component;
    }
    return path;
}

OrFailure<std::vector<std::string>> resolveTargetPath(std::string_view path) {
    std::vector<std::string> components = splitComponents(path);
    if (!std::all_of(components.begin(), components.end(), isAcceptable)) {
        return refusedPath(path, R"("..", "\", ":" and control characters are not allowed)");
    }
    const bool isBelowRoot = path.substr(0, 1) == "/" && components.size() >= rootComponents.size() &&
                             std::equal(rootComponents.begin(), rootComponents.end(), components.begin());
    if (!isBelowRoot) {
        return refusedPath(path, "it is not below /mnt/cn/cfdrive");
    }
    components.erase(components.begin(), components.begin() + static_cast<std::ptrdiff_t>(rootComponents.size()));
    return components;
}

Outcome checkTargetName(std::string_view name) {
    if (name.empty() || name == "." || name.find('/') != std::string_view::npos) {
        return refusedPath(name, "it is not the name of a file or folder");
    }
    if (!isAcceptable(name)) {
        return refusedPath(name, R"("..", "\", ":" and control characters are not allowed)");
    }
    return std::nullopt;
}
