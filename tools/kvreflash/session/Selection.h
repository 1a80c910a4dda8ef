#pragma once

#include "KvISession.h"

#include <string>
#include <vector>

/// Leaves elements out of the update. Class selection, with a message that names each of them, if one is not exactly
/// one element.
[[nodiscard]] KvNReflasher::KvTVerdict disableElements(KvISession& session, const std::vector<std::string>& elements);

/// Class selection if the filters of the options let no element through; the message says what may have been meant.
/// `hidden`: what they hide.
[[nodiscard]] KvNReflasher::KvTVerdict verdictOfFilters(const KvNReflasher::KvTPlan& plan,
                                                        const KvNReflasher::KvTOptions& options,
                                                        const std::vector<KvNReflasher::KvTHiddenElement>& hidden);

/// ", did you mean 'NAME'?" with the one of `names` that is spelled most like `name`; empty if none is.
[[nodiscard]] std::string suggestionFor(const std::string& name, const std::vector<std::string>& names);

/// The addresses or target paths of all elements, and their display names.
[[nodiscard]] std::vector<std::string> namesOfElements(const KvNReflasher::KvTPlan& plan);
