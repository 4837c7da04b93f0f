#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The relay's end of the program's socket.
class ProgramSocket
{
public:
    enum class Outcome {
        Connected,
        Nobody,     ///< no socket, or nobody listens to it
        Busy,       ///< somebody listens, but takes nobody on just now
        Stranger,   ///< it is another user's, or the system does not say whose
        Impossible, ///< the path is too long, or no more files can be opened
    };

    ProgramSocket() = default;
    ~ProgramSocket() { close(); }
    ProgramSocket(const ProgramSocket &) = delete;
    ProgramSocket &operator=(const ProgramSocket &) = delete;

    /// Never waits. Where it does not connect there is no socket afterwards.
    Outcome connect(const std::string &path);

    void close();
    bool isOpen() const { return m_socket >= 0; }
    int descriptor() const { return m_socket; }

private:
    int m_socket = -1;
};

/// Reads once without waiting. Bytes read; 0 where nothing is there just now; none at the end or on an error.
std::optional<std::size_t> readSome(int descriptor, char *bytes, std::size_t size);

/// Writes once without waiting. Bytes written, perhaps 0; none where the other side is gone.
std::optional<std::size_t> writeSome(int descriptor, std::string_view bytes);
