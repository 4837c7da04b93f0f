// Who asks, behind the proxies that are trusted.
#include "clientAddresses.h"

#include <gtest/gtest.h>

namespace {

const AddressNetworks trusted = *AddressNetworks::parse({"127.0.0.1", "10.0.0.0/8", "fd00::/8"});

std::string clientOf(const char *peer, const std::vector<std::string_view> &forwarded)
{
    return clientBehindProxies(boost::asio::ip::make_address(peer), forwarded, trusted).to_string();
}

} // namespace

TEST(ClientBehindProxies, isThePeerWhereThePeerIsNotTrusted)
{
    EXPECT_EQ(clientOf("203.0.113.7", {"198.51.100.1"}), "203.0.113.7");
    EXPECT_EQ(clientOf("::ffff:203.0.113.7", {}), "203.0.113.7");
}

TEST(ClientBehindProxies, isTheLastThatIsNotTrusted)
{
    EXPECT_EQ(clientOf("127.0.0.1", {"198.51.100.1"}), "198.51.100.1");
    EXPECT_EQ(clientOf("127.0.0.1", {"1.1.1.1, 198.51.100.1, 10.2.3.4"}), "198.51.100.1");
    EXPECT_EQ(clientOf("127.0.0.1", {"1.1.1.1", "198.51.100.1 ,10.2.3.4", "10.0.0.1"}), "198.51.100.1");
    EXPECT_EQ(clientOf("::ffff:127.0.0.1", {"2001:DB8:0::1, fd00::2"}), "2001:db8::1");
    EXPECT_EQ(clientOf("127.0.0.1", {"::ffff:198.51.100.1"}), "198.51.100.1");
    EXPECT_EQ(clientOf("127.0.0.1", {"198.51.100.1:4711"}), "198.51.100.1");
    EXPECT_EQ(clientOf("127.0.0.1", {"[2001:db8::1]:443"}), "2001:db8::1");
}

TEST(ClientBehindProxies, isTheOutermostProxyWhereAllAreTrusted)
{
    EXPECT_EQ(clientOf("127.0.0.1", {"10.0.0.9, 10.0.0.1"}), "10.0.0.9");
    EXPECT_EQ(clientOf("127.0.0.1", {}), "127.0.0.1");
}

TEST(ClientBehindProxies, readsNothingBehindAnEntryThatIsNoAddress)
{
    for (const auto *entry : {"unknown", "", "_hidden", "1.2.3", "256.1.1.1", "fe80::1%eth0",
                              "1.2.3.4:99999999", "[::1", "0x7f.0.0.1", "1.2.3.4 5.6.7.8"})
        EXPECT_EQ(clientOf("127.0.0.1", {"198.51.100.1, " + std::string(entry) + ", 10.0.0.5"}), "10.0.0.5")
            << entry;
    EXPECT_EQ(clientOf("127.0.0.1", {std::string_view("198.51.100.1, 1.2.3.4\0x", 24)}), "127.0.0.1");
}

TEST(AddressNetworks, holdWhatIsWithinThem)
{
    const auto holds = [](const char *network, const char *address) {
        return AddressNetworks::parse({network})->contains(boost::asio::ip::make_address(address));
    };
    EXPECT_TRUE(holds("192.0.2.0/25", "192.0.2.127"));
    EXPECT_FALSE(holds("192.0.2.0/25", "192.0.2.128"));
    EXPECT_TRUE(holds("192.0.2.77/25", "192.0.2.1"));
    EXPECT_TRUE(holds("192.0.2.1", "::ffff:192.0.2.1"));
    EXPECT_FALSE(holds("192.0.2.1", "192.0.2.2"));
    EXPECT_TRUE(holds("2001:db8::/33", "2001:db8:7fff::1"));
    EXPECT_FALSE(holds("2001:db8::/33", "2001:db8:8000::1"));
    EXPECT_TRUE(holds("0.0.0.0/0", "8.8.8.8"));
    EXPECT_FALSE(holds("0.0.0.0/0", "2001:db8::1"));
}

TEST(AddressNetworks, nameWhatTheyDoNotUnderstand)
{
    for (const auto *wrong : {"", "localhost", "10.0.0.0/33", "10.0.0.0/", "10.0.0.0/-1", "10.0.0.0/8x",
                              "::/129", "10.0.0.0/8/8", "[::1]", "*"}) {
        const auto parsed = AddressNetworks::parse({"127.0.0.1", wrong});
        ASSERT_FALSE(parsed) << wrong;
        EXPECT_NE(parsed.error().reason.find('"' + std::string(wrong) + '"'), std::string::npos);
    }
}
