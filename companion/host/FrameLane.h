#pragma once

#include "frames.h"

#include <cstddef>
#include <string>
#include <string_view>

/// One direction of the relay: bytes come in from one side, whole frames go out to the other. Holds about
/// `room` and one frame at most, as long as bytes are given in pieces of `room` and only while it hasRoom().
class FrameLane
{
public:
    static constexpr std::size_t room = 64 * 1024;

    explicit FrameLane(std::uint32_t longest)
        : m_longest(longest)
        , m_reader(longest)
    {}

    /// Whether more bytes may be given.
    bool hasRoom() const { return waiting().size() < room; }

    void take(std::string_view bytes);

    /// A message of the relay's own, after what waits.
    void put(std::string_view message);

    /// What is to be written next: the rest of a frame, whole frames after it.
    std::string_view waiting() const { return std::string_view(m_waiting).substr(m_written); }

    /// So many of the waiting bytes have been written.
    void written(std::size_t bytes);

    /// Drops every frame that is whole and what waits. Right only where the other side is gone or new,
    /// because the beginning of a frame may have been written.
    void dropFrames();

    /// The giving side is gone, and with it the frame that it had begun; whole frames stay.
    void beginAnew();

    /// A frame out of bounds came in; the ones before it may still wait.
    bool broken() const { return m_reader.broken(); }

    /// Whether a whole frame has come in since the last beginning.
    bool carriedFrame() const { return m_carriedFrame; }

private:
    void pull();

    std::uint32_t m_longest;
    FrameReader m_reader;
    std::string m_waiting;
    std::size_t m_written = 0; ///< bytes at the front of m_waiting that are out
    bool m_carriedFrame = false;
};
