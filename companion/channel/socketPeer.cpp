#include "socketPeer.h"

#include <sys/socket.h>

namespace {

std::optional<ucred> peer(int socket)
{
    ucred facts{};
    socklen_t size = sizeof facts;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &facts, &size) != 0 || size != sizeof facts)
        return std::nullopt;
    return facts;
}

} // namespace

std::optional<uid_t> peerUser(int socket)
{
    const auto facts = peer(socket);
    return facts ? std::optional(facts->uid) : std::nullopt;
}

std::optional<pid_t> peerProcess(int socket)
{
    const auto facts = peer(socket);
    return facts && facts->pid > 0 ? std::optional(facts->pid) : std::nullopt;
}
