#include "Relay.h"
#include "callerCheck.h"
#include "complain.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool neverWaits(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0;
}

} // namespace

int main(int argc, char **argv)
{
    // Else the next file that is opened would take its number and get our complaints.
    if (fcntl(STDERR_FILENO, F_GETFD) < 0 && open("/dev/null", O_WRONLY) < 0)
        return EXIT_FAILURE;
    if (!startedForOurExtension({argv + std::min(argc, 1), argv + argc})) {
        complain("a browser starts this for the Quorvel companion; it serves nobody else");
        return EXIT_FAILURE;
    }
    if (!neverWaits(STDIN_FILENO) || !neverWaits(STDOUT_FILENO)) {
        complain("there is no browser at standard input and output");
        return EXIT_FAILURE;
    }
    std::signal(SIGPIPE, SIG_IGN); // a write to somebody who is gone fails instead
    return Relay(STDIN_FILENO, STDOUT_FILENO).run();
}
