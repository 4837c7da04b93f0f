#pragma once

#include "Result.h"

#include <optional>
#include <string>

/// What the operator asks of the program.
struct CommandLine
{
    enum class Action { Serve, CheckConfiguration, Revoke, Help };

    Action action = Action::Serve;
    std::optional<std::string> file; ///< of the configuration
    std::string email;               ///< whose sessions end
    bool all = false;                ///< whether those of everybody do
};

/// Fails with a sentence for the operator.
Result<CommandLine> readCommandLine(int argc, const char *const *argv);

std::string commandLineHelp();
