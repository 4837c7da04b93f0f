#pragma once

#include <string>

/// The folder in which the running program is found, or why it cannot be used.
struct PrivateFolder
{
    std::string path;    ///< absolute, in the file system's encoding; there also where it cannot be used
    std::string problem; ///< in English; empty where there is none
    std::string problemInRussian; ///< the same, in UTF-8

    bool usable() const { return problem.empty(); }
};

/// $XDG_RUNTIME_DIR/quorvel, or /tmp/quorvel-UID where the session has no runtime folder. Creates it with
/// mode 0700. A folder that is a symbolic link, has another owner or is open to others is not usable.
PrivateFolder privateFolder();
