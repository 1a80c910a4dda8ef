#include "Settings.h"

#include "PathTexts.h"
#include "SystemFolders.h"
#include "Texts.h"
#include "UserFiles.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

using namespace KvNReflasher;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestFile = 65536;

/// True if it means the same wherever the tool is started.
bool isAbsolute(const std::string& path) {
    return filePath(path).is_absolute();
}

bool takeRequirePlan(const std::string& value, Settings& settings) {
    settings.requirePlan = {value == "true", KvESettingSource::settingsFile};
    return value == "true" || value == "false";
}

bool takeTrust(const std::string& value, Settings& settings) {
    settings.trust = {value, KvESettingSource::settingsFile};
    return isAbsolute(value);
}

bool takeJournal(const std::string& value, Settings& settings) {
    const bool isNone = value == "none";
    settings.journal = {isNone ? std::nullopt : std::optional(value), KvESettingSource::settingsFile};
    return isNone || isAbsolute(value);
}

struct Key {
    const char* name;
    /// Takes a value in. False if it is not understood.
    bool (*take)(const std::string& value, Settings& settings);
    /// What the value must be.
    const char* rule;
};

constexpr std::array keys = {Key{"require-plan", takeRequirePlan, "true or false"},
                             Key{"trust", takeTrust, "an absolute path"},
                             Key{"journal", takeJournal, "an absolute path or none"}};

/// The lines of a settings file. CLI11 reads each of them alone: in a whole text it joins keys that are given twice,
/// and passes over lines that it does not understand.
class SettingsLines {
public:
    explicit SettingsLines(Settings& settings) : settings_(settings) {
        // No line holds a line end: so a value has neither lists nor comments, and a key no sections.
        format_.comment('\n')->arrayBounds('\n', '\n')->parentSeparator('\n');
    }

    /// Returns why the line is not understood; empty: it is.
    [[nodiscard]] std::string take(const std::string& line) {
        const std::size_t begin = line.find_first_not_of(" \t\r");
        if (begin == std::string::npos || line[begin] == '#' || line[begin] == ';') {
            return {};
        }
        std::istringstream text(line);
        const std::vector<CLI::ConfigItem> items = format_.from_config(text);
        if (items.empty()) {
            return "it is not KEY = VALUE";
        }
        if (items.size() > 1) { // its begin and its end
            return "section '" + items.front().parents.front() + "': there are no sections";
        }
        // CLI11 takes a key alone for true.
        const bool hasValue = line.find('=') != std::string::npos;
        return takeValue(items.front().name, hasValue ? items.front().inputs.front() : std::string());
    }

private:
    [[nodiscard]] std::string takeValue(const std::string& name, const std::string& value) {
        const auto* const key =
            std::find_if(keys.begin(), keys.end(), [&name](const Key& known) { return known.name == name; });
        if (key == keys.end()) {
            return "unknown key '" + name + "'";
        }
        if (!given_.insert(name).second) {
            return name + " is given twice";
        }
        if (value.empty()) {
            return name + " needs a value";
        }
        if (visibleInLine(value) != value || !key->take(value, settings_)) {
            return std::string(name).append(": '").append(value).append("' must be ").append(key->rule);
        }
        return {};
    }

    Settings& settings_;
    CLI::ConfigINI format_;
    std::set<std::string> given_;
};

/// Reads the whole file. Returns why that is not possible; empty: it was read.
std::string readWhole(const fs::path& path, std::string& text) {
    std::error_code ignored;
    if (fs::is_other(path, ignored)) { // to open a pipe is to wait
        return "it is not a regular file";
    }
    text.resize(largestFile + 1);
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.is_open() || file.bad()) {
        return reasonOf(path, errno);
    }
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text.size() > largestFile ? "it has more than " + std::to_string(largestFile) + " bytes" : std::string();
}

} // namespace

std::string takeSettingsText(const std::string& text, Settings& settings) {
    if (wideOf(text).empty() && !text.empty()) {
        return "it is not valid UTF-8";
    }
    SettingsLines lines(settings);
    std::istringstream stream(text);
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (const std::string fault = lines.take(line); !fault.empty()) {
            return "line " + std::to_string(number) + ": " + fault;
        }
    }
    return {};
}

Settings settingsOfTheToolAlone() {
    Settings settings;
    settings.file = systemSettingsFile().path;
    settings.fileState = KvESettingsFile::ignored;
    settings.journal.value = defaultJournalFolder();
    return settings;
}

std::string readSettings(Settings& settings) {
    settings = settingsOfTheToolAlone();
    if (const SystemPlace trust = systemTrustFolder(); !trust.isAbsent) {
        settings.trust.value = trust.path;
    }
    settings.fileState = KvESettingsFile::absent;
    if (systemSettingsFile().isAbsent) {
        return {};
    }
    settings.fileState = KvESettingsFile::read;
    std::string text;
    std::string fault = readWhole(filePath(settings.file), text);
    if (fault.empty()) {
        fault = takeSettingsText(text, settings);
    }
    return fault.empty() ? fault : "the settings file " + quotedPath(settings.file) + " cannot be used: " + fault;
}
