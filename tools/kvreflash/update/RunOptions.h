#pragma once

#include "SharedOptions.h"

#include <string>
#include <vector>

/// A run of the journal, or those of a target.
struct RunArgument final : OptionGroup {
    /// Id of the run; empty: none was named.
    std::string run;

    void addTo(CommandSyntax& syntax) override;
};

/// The runs of a journal that were made for the target `host`, a name or an address; empty: all. Says which files of
/// the journal cannot be read.
[[nodiscard]] KvNReflasher::KvTRunList runsFor(const JournalOption& journal, const std::string& host);
