// Bytes from a browser or from the program, in pieces of any size. The first byte of an input gives the
// longest message, the second the sizes of the pieces; the rest is what is read.
#include "frames.h"
#include "require.h"

#include <algorithm>
#include <cstring>

namespace {

/// What came out of the reader, framed again.
struct Reading
{
    std::string framed;
    std::size_t pending = 0;
    bool broken = false;
};

void takeAll(FrameReader &reader, std::uint32_t longest, std::string &framed)
{
    while (const auto message = reader.next()) {
        require(!message->empty() && message->size() <= longest, "a message keeps to the bounds");
        framed += writeFrame(*message);
    }
    require(reader.pending() < frameLengthBytes + longest, "less than the longest message waits");
}

/// `pieces` is the start of a row of piece sizes from 1 to 64 bytes; none for all at once.
Reading readAll(std::string_view bytes, std::uint32_t longest, std::uint32_t pieces)
{
    FrameReader reader(longest);
    Reading reading;
    while (!bytes.empty()) {
        pieces = pieces * 1664525 + 1013904223;
        const auto size = std::min<std::size_t>(1 + (pieces >> 26), bytes.size());
        reader.append(bytes.substr(0, size));
        bytes.remove_prefix(size);
        takeAll(reader, longest, reading.framed);
    }
    reading.pending = reader.pending();
    reading.broken = reader.broken();
    if (reading.broken) {
        reader.append(writeFrame("x"));
        require(!reader.next() && reader.broken() && reader.pending() == 0, "broken is final");
    }
    return reading;
}

Reading readAtOnce(std::string_view bytes, std::uint32_t longest)
{
    FrameReader reader(longest);
    Reading reading;
    reader.append(bytes);
    takeAll(reader, longest, reading.framed);
    reading.pending = reader.pending();
    reading.broken = reader.broken();
    return reading;
}

bool breaks(std::string_view bytes, std::uint32_t longest)
{
    std::uint32_t length = 0;
    if (bytes.size() < frameLengthBytes)
        return false;
    std::memcpy(&length, bytes.data(), frameLengthBytes);
    return length == 0 || length > longest;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::uint32_t longest = data[0] == 255 ? longestFrameFromBrowser : 1U + data[0];
    const std::string_view bytes(reinterpret_cast<const char *>(data) + 2, size - 2);

    const auto reading = readAll(bytes, longest, data[1]);
    require(bytes.starts_with(reading.framed), "what came out is what went in");
    const auto rest = bytes.substr(reading.framed.size());
    require(reading.broken == breaks(rest, longest),
            "it breaks where a length is out of bounds, and only there");
    require(reading.pending == (reading.broken ? 0 : rest.size()), "what has not come out waits");

    const auto atOnce = readAtOnce(bytes, longest);
    require(atOnce.framed == reading.framed && atOnce.broken == reading.broken &&
                atOnce.pending == reading.pending,
            "the sizes of the pieces make no difference");
    return 0;
}
