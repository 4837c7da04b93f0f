#include "ProgramSocket.h"

#include "socketPeer.h"

#include <cerrno>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

ProgramSocket::Outcome ProgramSocket::connect(const std::string &path)
{
    close();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return Outcome::Impossible;
    path.copy(address.sun_path, path.size());
    m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (m_socket < 0)
        return Outcome::Impossible;
    if (::connect(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        const bool busy = errno == EAGAIN;
        close();
        return busy ? Outcome::Busy : Outcome::Nobody;
    }
    if (peerUser(m_socket) != geteuid()) {
        close();
        return Outcome::Stranger;
    }
    return Outcome::Connected;
}

void ProgramSocket::close()
{
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
}

std::optional<std::size_t> readSome(int descriptor, char *bytes, std::size_t size)
{
    const auto got = read(descriptor, bytes, size);
    if (got > 0)
        return std::size_t(got);
    if (got < 0 && (errno == EAGAIN || errno == EINTR))
        return 0;
    return std::nullopt;
}

std::optional<std::size_t> writeSome(int descriptor, std::string_view bytes)
{
    const auto put = write(descriptor, bytes.data(), bytes.size());
    if (put >= 0)
        return std::size_t(put);
    if (errno == EAGAIN || errno == EINTR)
        return 0;
    return std::nullopt;
}
