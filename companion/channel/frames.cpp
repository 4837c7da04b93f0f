#include "frames.h"

#include <cstring>

std::string writeFrame(std::string_view message)
{
    const auto length = static_cast<std::uint32_t>(message.size());
    std::string frame(frameLengthBytes, '\0');
    std::memcpy(frame.data(), &length, frameLengthBytes);
    frame.append(message);
    return frame;
}

void FrameReader::append(std::string_view bytes)
{
    if (m_broken)
        return;
    if (m_read == m_bytes.size()) {
        m_bytes.clear();
        m_read = 0;
    } else if (m_read > m_bytes.size() / 2) { // so each byte is moved once on the average
        m_bytes.erase(0, m_read);
        m_read = 0;
    }
    m_bytes.append(bytes);
}

std::optional<std::string> FrameReader::next()
{
    if (m_broken || pending() < frameLengthBytes)
        return std::nullopt;
    std::uint32_t length = 0;
    std::memcpy(&length, m_bytes.data() + m_read, frameLengthBytes);
    if (length == 0 || length > m_longest) {
        m_broken = true;
        m_bytes.clear();
        m_read = 0;
        return std::nullopt;
    }
    if (pending() - frameLengthBytes < length)
        return std::nullopt;
    auto message = m_bytes.substr(m_read + frameLengthBytes, length);
    m_read += frameLengthBytes + length;
    return message;
}
