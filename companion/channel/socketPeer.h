#pragma once

#include <optional>
#include <sys/types.h>

/// The user of the process at the other end of a Unix socket; none where the system does not say.
std::optional<uid_t> peerUser(int socket);

/// The process at the other end of a Unix socket as it was when it connected; none where the system does not
/// say, or it is out of sight.
std::optional<pid_t> peerProcess(int socket);
