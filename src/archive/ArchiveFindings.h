#pragma once

#include "EntryProperties.h"
#include "KvCConsoleWriter.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

/// Everything that can be wrong with an archive.
enum class KvEArchiveRule : std::uint8_t {
    descriptionFileOpens,
    descriptionIsJson,
    infoIsObject,
    formatVersionIsString,
    formatVersionIsVersion,
    formatVersionIsSupported,
    archiveVersionIsString,
    archiveVersionIsVersion,
    productNameIsString,
    archiveVariantIsString,
    archiveNameIsString,
    filesIsArray,
    entryIsObject,
    featureLevelIsUnsigned,
    /// Not an error: the entry is skipped.
    featureLevelIsSupported,
    mandatoryProperties,
    boardIsObjectWithType,
    propertyType,
    propertyElements,
    versionIsVersion,
    modeIsKnown,
    boardHasNoEntryProperties,
    idOrTargetPathNotBoth,
    idOrTargetPath,
    updateFileExists,
    updateFileHasChecksum
};

/// Marks a finding that concerns no entry.
inline constexpr std::uint32_t noEntry = 0xFFFFFFFF;
/// Marks a finding that concerns an entry itself and no element of its "boards".
inline constexpr std::int32_t noBoard = -1;

/// Marks a finding that concerns no item of an array.
inline constexpr std::size_t noItem = std::numeric_limits<std::size_t>::max();

/// A broken rule and where it was met.
struct KvTArchiveFinding {
    KvEArchiveRule rule = KvEArchiveRule::descriptionFileOpens;
    /// Index in "files", from 0.
    std::uint32_t entry = noEntry;
    /// Index in the entry's "boards", from 0.
    std::int32_t board = noBoard;
    /// The property concerned, for the rules on one property.
    KvEProperty property = KvEProperty::name;
    /// Index in the property's array, from 0, for the rule on the items of arrays.
    std::size_t item = noItem;
    /// What the file concerned is, if that is why it was not read: "a pipe, not a regular file". Its message does not
    /// say it.
    std::string fileFault = {};
};

/// A message of the rules (UTF-8) as a sentence: without the word that it begins with and the end of its line; of two
/// lines, one behind the other.
[[nodiscard]] std::string sentenceOf(std::string_view message);

/// Where the archive's rules report what they find. As it stands each finding's message is printed and the first
/// error ends the reading; a derived class may go on and collect.
class KvCArchiveFindings {
public:
    explicit KvCArchiveFindings(const KvCConsoleWriter& writer) : writer_(writer) {}
    KvCArchiveFindings(const KvCArchiveFindings&) = delete;
    KvCArchiveFindings& operator=(const KvCArchiveFindings&) = delete;
    virtual ~KvCArchiveFindings() = default;

    /// Reports an error with its message. True: go on looking; the archive is refused all the same.
    template <typename... Arguments>
    [[nodiscard]] bool error(const KvTArchiveFinding& finding, KvCFormat<std::type_identity_t<Arguments>...> message,
                             Arguments... arguments) {
        ++errorCount_;
        const bool goOn = takeError(finding);
        writer_.print<Arguments...>(message, arguments...);
        if (errorCount_ == 1) {
            std::wstring text;
            KvCConsoleWriter::format<Arguments...>(text, message, arguments...);
            keepFirstError(text, finding.fileFault);
        }
        return goOn;
    }

    /// Reports a condition that is only skipped.
    template <typename... Arguments>
    void warning(const KvTArchiveFinding& finding, KvCFormat<std::type_identity_t<Arguments>...> message,
                 Arguments... arguments) {
        takeWarning(finding);
        writer_.print<Arguments...>(message, arguments...);
    }

    /// Number of errors reported so far.
    [[nodiscard]] std::uint32_t errorCount() const { return errorCount_; }
    /// The sentence of the first error in one line, UTF-8, and what the file concerned is if that is the reason; empty
    /// if there is none. Line breaks in names are shown as JSON writes them.
    [[nodiscard]] const std::string& firstError() const { return firstError_; }

protected:
    /// Called before the error's message is printed; the result is that of error().
    virtual bool takeError(const KvTArchiveFinding& /*finding*/) { return false; }
    /// Called before the warning's message is printed.
    virtual void takeWarning(const KvTArchiveFinding& /*finding*/) {}

private:
    void keepFirstError(const std::wstring& message, const std::string& fileFault);

    const KvCConsoleWriter& writer_;
    std::uint32_t errorCount_ = 0;
    std::string firstError_;
};
