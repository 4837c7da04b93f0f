#pragma once

#include "Result.h"

#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/network_v6.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// An address as it is compared and shown everywhere: IPv4 within IPv6 is IPv4. None where
/// the text is no address; a port behind it is left out ("203.0.113.7:1234", "[2001:db8::1]:1234").
std::optional<boost::asio::ip::address> canonicalAddress(std::string_view text);
boost::asio::ip::address canonicalAddress(const boost::asio::ip::address &address);

/// What a limit for one client counts by: the address, or the first 64 bits of an IPv6 address
/// ("2001:db8::/64"), since its owner chooses the rest freely. A text that is no address stays as it is.
std::string networkOf(std::string_view address);
std::string networkOf(const boost::asio::ip::address &address);

/// Addresses and networks that the operator has named.
class AddressNetworks
{
public:
    /// From "127.0.0.1", "10.0.0.0/8", "2001:db8::/32". Fails at the first that is neither.
    static Result<AddressNetworks> parse(const std::vector<std::string> &texts);

    bool contains(const boost::asio::ip::address &address) const;

private:
    std::vector<boost::asio::ip::network_v6> m_networks; ///< those of IPv4 within IPv6
};

/// Who asks. `peer` is the other end of the connection; where it is trusted, the `forwarded` values of
/// X-Forwarded-For, in their order, are read from the last entry backwards past all that are trusted too. The
/// first that is not is the client; an entry that is no address ends the reading, and so does the list's
/// begin.
boost::asio::ip::address clientBehindProxies(const boost::asio::ip::address &peer,
                                             const std::vector<std::string_view> &forwarded,
                                             const AddressNetworks &trusted);
