#include "commandLine.h"

#include <string_view>
#include <utility>
#include <vector>

Result<CommandLine> readCommandLine(int argc, const char *const *argv)
{
    CommandLine command;
    bool hasAction = false;
    const std::vector<std::string_view> words(argv + std::min(argc, 1), argv + argc);
    for (std::size_t place = 0; place < words.size(); ++place) {
        const auto word = words[place];
        const bool hasNext = place + 1 < words.size();
        const bool isAction = word != "--config";
        if (isAction && std::exchange(hasAction, true)) // ending sessions by mistake cannot be taken back
            return Failure{std::string(word) + " cannot stand together with what is before it."};
        if (word == "--help" || word == "-h") {
            command.action = CommandLine::Action::Help;
        } else if (word == "--check-config") {
            command.action = CommandLine::Action::CheckConfiguration;
        } else if (word == "--config" && hasNext) {
            command.file = words[++place];
        } else if (word == "revoke" && hasNext) {
            command.action = CommandLine::Action::Revoke;
            command.email = words[++place];
            command.all = command.email == "--all";
        } else {
            return Failure{std::string(word) + " is not understood here; --help lists what is."};
        }
    }
    return command;
}

std::string commandLineHelp()
{
    return "usage: quorvel-server [--config FILE] [--check-config | revoke ADDRESS | revoke --all]\n"
           "\n"
           "Serves the sign-in and the coach of Quorvel. Without any setting it serves this machine, keeps "
           "its\n"
           "database in the current folder and writes the mail with the codes to standard output.\n"
           "\n"
           "  --config FILE     reads settings from FILE, one \"name = value\" a line\n"
           "  --check-config    says whether the settings make sense, and ends\n"
           "  revoke ADDRESS    ends all sessions of that mail address (--all: of everybody), and ends\n"
           "\n"
           "Each setting can also be an environment variable, which counts more than the file: smtp-host is\n"
           "QUORVEL_SERVER_SMTP_HOST. The settings and what they are when nobody sets them:\n";
}
