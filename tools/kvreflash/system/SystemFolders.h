#pragma once

#include <string>

// Where files of the tool are on this system. Paths are UTF-8.

/// A file or folder of the administrator.
struct SystemPlace {
    std::string path;
    /// It is known that nothing is there, not even a link. What is not known must not be taken for absent.
    bool isAbsent = false;
};

/// The folder that says whom this machine trusts.
[[nodiscard]] SystemPlace systemTrustFolder();

/// The settings of this machine.
[[nodiscard]] SystemPlace systemSettingsFile();

/// The folder of journals unless somebody names another one: that of the user's state, or of the system's for root.
[[nodiscard]] std::string defaultJournalFolder();
