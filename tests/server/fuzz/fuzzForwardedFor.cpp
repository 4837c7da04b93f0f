// What a header X-Forwarded-For may hold, and what an operator may write as a network. Each line of an input
// is one header, and one network.
#include "clientAddresses.h"
#include "require.h"
#include "textChecks.h"

#include <cstdint>

namespace ip = boost::asio::ip;

namespace {

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        lines.push_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(lines.back().size() + 1, text.size()));
    }
    return lines;
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto lines = linesOf({reinterpret_cast<const char *>(data), size});
    static const auto trusted = *AddressNetworks::parse({"127.0.0.0/8", "10.0.0.0/8", "::1", "fd00::/8"});
    const auto proxy = ip::make_address("10.1.2.3");
    const auto stranger = ip::make_address("203.0.113.7");
    require(clientBehindProxies(stranger, lines, trusted) == stranger, "a stranger is believed nothing");

    const auto client = clientBehindProxies(proxy, lines, trusted);
    require(canonicalAddress(client) == client && canonicalAddress(client.to_string()) == client,
            "an address has one form");
    require(networkOf(client) == networkOf(client.to_string()), "a limit counts one client under one name");
    require(client.is_v6() || networkOf(client) == client.to_string(), "an IPv4 address is its own network");

    for (const auto line : lines) {
        const auto network = AddressNetworks::parse({std::string(line)});
        if (network && line.find('/') == std::string_view::npos)
            require(network->contains(*canonicalAddress(trimmed(line))),
                    "an address is within its own network");
    }
    return 0;
}
