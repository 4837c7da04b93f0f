#include "clientAddresses.h"

#include "textChecks.h"

#include <algorithm>
#include <charconv>

namespace ip = boost::asio::ip;

namespace {

/// IPv4 within IPv6, so that one comparison serves both.
ip::address_v6 wide(const ip::address &address)
{
    return address.is_v4() ? ip::make_address_v6(ip::v4_mapped, address.to_v4()) : address.to_v6();
}

bool isPort(std::string_view text)
{
    return !text.empty() && text.size() <= 5 &&
           text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// Without the port and the brackets that some proxies write; none where what is left over makes no sense.
std::optional<std::string_view> withoutPort(std::string_view text)
{
    if (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos)
            return std::nullopt;
        const auto rest = text.substr(end + 1);
        if (!rest.empty() && (rest.front() != ':' || !isPort(rest.substr(1))))
            return std::nullopt;
        return text.substr(1, end - 1);
    }
    const auto colon = text.find(':');
    if (colon != std::string_view::npos && text.find('.') < colon && isPort(text.substr(colon + 1)))
        return text.substr(0, colon);
    return text;
}

std::optional<ip::network_v6> networkFrom(std::string_view text)
{
    const auto slash = text.find('/');
    const auto address = canonicalAddress(text.substr(0, slash));
    if (!address || text.find_first_of("[]") != std::string_view::npos)
        return std::nullopt;
    const unsigned bits = address->is_v4() ? 32 : 128;
    unsigned length = bits;
    if (slash != std::string_view::npos) {
        const auto digits = text.substr(slash + 1);
        const auto *const last = digits.data() + digits.size();
        const auto [end, error] = std::from_chars(digits.data(), last, length);
        if (error != std::errc() || end != last || length > bits)
            return std::nullopt;
    }
    return ip::network_v6(wide(*address), static_cast<unsigned short>(length + 128 - bits)).canonical();
}

} // namespace

ip::address canonicalAddress(const ip::address &address)
{
    if (address.is_v4())
        return address;
    auto long6 = address.to_v6();
    if (long6.is_v4_mapped())
        return ip::make_address_v4(ip::v4_mapped, long6);
    long6.scope_id(0);
    return long6;
}

std::optional<ip::address> canonicalAddress(std::string_view text)
{
    const auto plain = withoutPort(text);
    if (!plain || plain->find_first_not_of("0123456789abcdefABCDEF:.") != std::string_view::npos)
        return std::nullopt; // a scope names an interface of somebody else's machine
    boost::system::error_code error;
    const auto address = ip::make_address(std::string(*plain), error);
    if (error)
        return std::nullopt;
    return canonicalAddress(address);
}

std::string networkOf(const ip::address &address)
{
    if (address.is_v4())
        return address.to_string();
    return ip::network_v6(address.to_v6(), 64).canonical().to_string();
}

std::string networkOf(std::string_view address)
{
    const auto parsed = canonicalAddress(address);
    return parsed ? networkOf(*parsed) : std::string(address);
}

Result<AddressNetworks> AddressNetworks::parse(const std::vector<std::string> &texts)
{
    AddressNetworks networks;
    for (const auto &text : texts) {
        const auto network = networkFrom(trimmed(text));
        if (!network)
            return Failure{"\"" + text + "\" is neither an address nor a network such as 10.0.0.0/8"};
        networks.m_networks.push_back(*network);
    }
    return networks;
}

bool AddressNetworks::contains(const ip::address &address) const
{
    const auto wanted = wide(canonicalAddress(address));
    return std::any_of(m_networks.begin(), m_networks.end(), [&wanted](const ip::network_v6 &network) {
        return ip::network_v6(wanted, network.prefix_length()).canonical() == network;
    });
}

ip::address clientBehindProxies(const ip::address &peer, const std::vector<std::string_view> &forwarded,
                                const AddressNetworks &trusted)
{
    auto client = canonicalAddress(peer);
    for (auto list = forwarded.rbegin(); list != forwarded.rend(); ++list) {
        auto rest = *list;
        for (bool isMore = true; isMore;) {
            if (!trusted.contains(client))
                return client;
            const auto comma = rest.rfind(',');
            isMore = comma != std::string_view::npos;
            const auto entry = canonicalAddress(trimmed(isMore ? rest.substr(comma + 1) : rest));
            if (!entry)
                return client;
            client = *entry;
            rest = rest.substr(0, isMore ? comma : 0);
        }
    }
    return client;
}
