#pragma once

#include "ArchiveBuilder.h"
#include "KeptMessages.h"
#include "KvCFirmwareArchive.h"
#include "KvTOptions.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// Number of this process's open files; 0 on a system that does not tell in this way.
[[nodiscard]] std::size_t openFileCount();

/// An archive in a folder of its own, read by the library; every message is kept. Each test ends with nothing held of
/// the platform, no file left open, and no error in the master error list.
class ArchiveTest : public testing::Test {
protected:
    ArchiveTest();
    void SetUp() override;
    void TearDown() override;

    /// Writes a file into the archive folder; `name` is UTF-8, "/" separates.
    void writeFile(std::string_view name, std::string_view bytes) const;
    void makeFolder(std::string_view name) const;
    /// The path under which the library knows a file of the archive folder.
    [[nodiscard]] std::wstring pathOf(std::wstring_view name) const;
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }

    /// Writes the description and has a new archive object read it, without a look at the update files. Messages of
    /// before are forgotten, as in the following two.
    bool readDescription(std::string_view text);
    bool readDescription(const ArchiveBuilder& builder) { return readDescription(builder.text()); }
    /// The same with the archive object of before.
    bool readDescriptionAgain(std::string_view text);
    bool readDescriptionAgain(const ArchiveBuilder& builder) { return readDescriptionAgain(builder.text()); }
    /// Writes the description and has a new archive object read it and complete it from the update files.
    bool readArchive(std::string_view text);
    bool readArchive(const ArchiveBuilder& builder) { return readArchive(builder.text()); }

    /// What the library has said since the last reading.
    [[nodiscard]] static std::wstring messages() { return KeptMessages::text(); }
    static void forgetMessages() { KeptMessages::forget(); }
    /// The bytes that `print` prints.
    [[nodiscard]] static std::string printed(const std::function<void()>& print);

    KvCFirmwareArchive& archive() { return *archive_; }
    [[nodiscard]] const KvTArchiveFile& file(std::size_t index) { return archive_->files().at(index); }
    [[nodiscard]] const KvCConsoleWriter& writer() const { return messages_.writer(); }
    KvNReflasher::KvTOptions& options() { return options_; }

private:
    void beginReading(std::string_view text);

    ScratchFolder folder_;
    KeptMessages messages_;
    KvNReflasher::KvTOptions options_{};
    std::optional<KvCFirmwareArchive> archive_;
    std::size_t openFilesBefore_ = 0;
};
