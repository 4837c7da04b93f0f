#include "FrameLane.h"

void FrameLane::take(std::string_view bytes)
{
    m_reader.append(bytes);
    pull();
}

void FrameLane::put(std::string_view message)
{
    m_waiting += writeFrame(message);
}

void FrameLane::written(std::size_t bytes)
{
    m_written += bytes;
    if (m_written > m_waiting.size() / 2) { // so each byte is moved once on the average
        m_waiting.erase(0, m_written);
        m_written = 0;
    }
    pull();
}

void FrameLane::dropFrames()
{
    while (m_reader.next())
        m_carriedFrame = true;
    m_waiting.clear();
    m_written = 0;
}

void FrameLane::beginAnew()
{
    m_reader = FrameReader(m_longest);
    m_carriedFrame = false;
}

void FrameLane::pull()
{
    while (hasRoom()) {
        const auto message = m_reader.next();
        if (!message)
            return;
        m_carriedFrame = true;
        put(*message);
    }
}
