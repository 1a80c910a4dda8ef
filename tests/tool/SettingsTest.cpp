#include "Settings.h"
#include "SettingsText.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using KvNReflasher::KvESettingsFile;
using KvNReflasher::KvESettingSource;

/// An absolute path on this system.
const std::string folder = std::filesystem::current_path().root_path().string() + "srv/one";

/// The settings of a text that is understood.
Settings settingsOf(const std::string& text) {
    Settings settings;
    EXPECT_EQ(takeSettingsText(text, settings), "") << text;
    return settings;
}

/// Why a text is not understood.
std::string faultOf(const std::string& text) {
    Settings settings;
    return takeSettingsText(text, settings);
}

TEST(Settings, EachKeyHasItsValueAndSource) {
    const Settings settings = settingsOf("require-plan = true\ntrust = " + folder + "\njournal = " + folder + "/two\n");
    EXPECT_TRUE(settings.requirePlan.value);
    EXPECT_EQ(settings.requirePlan.source, KvESettingSource::settingsFile);
    EXPECT_EQ(settings.trust.value, folder);
    EXPECT_EQ(settings.trust.source, KvESettingSource::settingsFile);
    EXPECT_EQ(settings.journal.value, folder + "/two");
    EXPECT_EQ(settings.journal.source, KvESettingSource::settingsFile);
}

TEST(Settings, AKeyThatIsNotThereKeepsItsDefault) {
    Settings settings;
    settings.journal.value = "default";
    EXPECT_EQ(takeSettingsText("require-plan = false\n", settings), "");
    EXPECT_FALSE(settings.requirePlan.value);
    EXPECT_EQ(settings.requirePlan.source, KvESettingSource::settingsFile);
    EXPECT_EQ(settings.trust.value, std::nullopt);
    EXPECT_EQ(settings.trust.source, KvESettingSource::builtIn);
    EXPECT_EQ(settings.journal.value, "default");
    EXPECT_EQ(settings.journal.source, KvESettingSource::builtIn);
}

TEST(Settings, TheWordNoneIsNoJournal) {
    const Settings settings = settingsOf("journal = none");
    EXPECT_EQ(settings.journal.value, std::nullopt);
    EXPECT_EQ(settings.journal.source, KvESettingSource::settingsFile);
}

TEST(Settings, CommentsEmptyLinesAndBlanksMeanNothing) {
    for (const char* text : {"", "\n", "# trust\n; journal = x\n  # unknown = 1\n\n \t \n", "#", "\r\n; x\r\n"}) {
        const Settings settings = settingsOf(text);
        EXPECT_EQ(settings.requirePlan.source, KvESettingSource::builtIn) << text;
    }
    for (const char* text : {"require-plan=true", "  require-plan\t=  true  ", "require-plan = true\r\n",
                             "require-plan = \"true\"", "\n\nrequire-plan = 'true'\n\n"}) {
        EXPECT_TRUE(settingsOf(text).requirePlan.value) << text;
    }
}

TEST(Settings, AValueIsTakenAsItIs) {
    for (const char* name : {"a b", "a,b", "[a, b]", "a;b", "a # b", "a = b", "a.b", "\"q\" c", "\xC3\xBC", "it's"}) {
        const std::string path = folder + "/" + name;
        EXPECT_EQ(settingsOf("trust = " + path).trust.value, path);
        EXPECT_EQ(settingsOf("trust = \"" + path + "\"").trust.value, path);
    }
}

struct FaultRow {
    const char* text;
    const char* fault;
};

constexpr FaultRow faultRows[] = {
    {"plan = true", "line 1: unknown key 'plan'"},
    {"\n# x\nRequire-Plan = true", "line 3: unknown key 'Require-Plan'"},
    {"trust.x = /srv", "line 1: unknown key 'trust.x'"},
    {"default.trust = /srv", "line 1: unknown key 'default.trust'"},
    {"\xEF\xBB\xBFtrust = /srv", "line 1: unknown key '\xEF\xBB\xBFtrust'"},
    {"unknown", "line 1: unknown key 'unknown'"},
    {"= true", "line 1: unknown key ''"},
    {"[trust]", "line 1: section 'trust': there are no sections"},
    {"[a.b]\nrequire-plan = true", "line 1: section 'a.b': there are no sections"},
    {"[[a]]", "line 1: section 'a': there are no sections"},
    {"[default]\nrequire-plan = true", "line 1: it is not KEY = VALUE"},
    {"[]", "line 1: it is not KEY = VALUE"},
    {"x", "line 1: it is not KEY = VALUE"},
    {"x=", "line 1: it is not KEY = VALUE"},
    {"require-plan = true\nrequire-plan = true", "line 2: require-plan is given twice"},
    {"require-plan = true\njournal = none\nrequire-plan = false", "line 3: require-plan is given twice"},
    {"require-plan", "line 1: require-plan needs a value"},
    {"require-plan =", "line 1: require-plan needs a value"},
    {"trust = \"\"", "line 1: trust needs a value"},
    {"journal = \n/srv", "line 1: journal needs a value"},
    {"require-plan = yes", "line 1: require-plan: 'yes' must be true or false"},
    {"require-plan = True", "line 1: require-plan: 'True' must be true or false"},
    {"require-plan = 1", "line 1: require-plan: '1' must be true or false"},
    {"require-plan = true ; or not", "line 1: require-plan: 'true ; or not' must be true or false"},
    {"require-plan = true false", "line 1: require-plan: 'true false' must be true or false"},
    {"require-plan = true\rtrust = /srv", "line 1: require-plan: 'true\rtrust = /srv' must be true or false"},
    {"trust = trust", "line 1: trust: 'trust' must be an absolute path"},
    {"trust = none", "line 1: trust: 'none' must be an absolute path"},
    {"trust = ~/trust", "line 1: trust: '~/trust' must be an absolute path"},
    {"trust = \"/srv", "line 1: trust: '\"/srv' must be an absolute path"},
    {"journal = None", "line 1: journal: 'None' must be an absolute path or none"},
    {"journal = ../journal", "line 1: journal: '../journal' must be an absolute path or none"},
    {"trust = /srv\xFF", "it is not valid UTF-8"},
    {"\xFF\xFEt\1r\1", "it is not valid UTF-8"},
};

TEST(Settings, WhatIsNotUnderstoodIsNamedWithItsLine) {
    for (const FaultRow& row : faultRows) {
        EXPECT_EQ(faultOf(row.text), row.fault) << row.text;
    }
}

TEST(Settings, APathWithControlCharactersIsNotUnderstood) {
    for (const std::string& control : {std::string("\0", 1), std::string("\t"), std::string("\x1B")}) {
        const std::string path = folder + control + "x";
        EXPECT_EQ(faultOf("trust = " + path), "line 1: trust: '" + path + "' must be an absolute path");
    }
}

TEST(Settings, TheToolAloneHasNoTrustFolderButAFolderForJournals) {
    const Settings settings = settingsOfTheToolAlone();
    EXPECT_EQ(settings.fileState, KvESettingsFile::ignored);
    EXPECT_NE(settings.file, "");
    EXPECT_FALSE(settings.requirePlan.value);
    EXPECT_EQ(settings.trust.value, std::nullopt);
    EXPECT_NE(settings.journal.value.value_or(""), "");
}

TEST(SettingsText, StatesTheFileAndEachValueWithItsSource) {
    Settings settings;
    settings.file = "kvreflash.ini";
    settings.fileState = KvESettingsFile::read;
    settings.requirePlan = {true, KvESettingSource::settingsFile};
    settings.trust = {"/srv/trust", KvESettingSource::commandLine};
    const std::string text = settingsText(settings);
    EXPECT_EQ(text.substr(text.find('\n')), "\n\n"
                                            "Setting      | Value      | Source       \n"
                                            "-----------------------------------------\n"
                                            "require-plan | true       | settings file\n"
                                            "trust        | /srv/trust | command line \n"
                                            "journal      | none       | default      \n");
}

} // namespace
