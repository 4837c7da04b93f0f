#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Messages are told apart as browsers do it: four bytes of length in the machine's byte order, then as many
/// bytes of UTF-8 JSON.
inline constexpr std::size_t frameLengthBytes = 4;

/// Bytes of JSON in one message at most, to the browser. The browsers' own bound.
inline constexpr std::uint32_t longestFrameToBrowser = 1024 * 1024;

/// Bytes of JSON in one message at most, from the browser. Browsers allow 64 MiB; this is 4,000 tabs whose
/// addresses are as long as the extension tells them.
inline constexpr std::uint32_t longestFrameFromBrowser = 4 * 1024 * 1024;

/// The message with its length before it. `message` is at most 4 GiB.
std::string writeFrame(std::string_view message);

/// Takes bytes as they come and gives whole messages. A length of 0 or above the bound breaks it for good,
/// since nothing after that can be told apart.
class FrameReader
{
public:
    explicit FrameReader(std::uint32_t longest)
        : m_longest(longest)
    {}

    /// Bytes that come after broken() are dropped.
    void append(std::string_view bytes);

    /// The next whole message without its length; none until its last byte is there.
    std::optional<std::string> next();

    bool broken() const { return m_broken; }

    /// Bytes that wait for the rest of their message.
    std::size_t pending() const { return m_bytes.size() - m_read; }

private:
    std::uint32_t m_longest;
    std::string m_bytes;
    std::size_t m_read = 0; ///< where the next message begins in m_bytes
    bool m_broken = false;
};
