#include "secrets.h"

#include <algorithm>
#include <boost/algorithm/hex.hpp>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <openssl/sha.h>
#include <spdlog/spdlog.h>

namespace {

const unsigned char *bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char *>(text.data());
}

unsigned char *bytesOf(std::string &text)
{
    return reinterpret_cast<unsigned char *>(text.data());
}

} // namespace

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    if (RAND_bytes(bytesOf(bytes), static_cast<int>(count)) != 1) {
        spdlog::critical("there are no random numbers on this machine");
        std::abort();
    }
    return bytes;
}

std::string newToken()
{
    return base64url(randomBytes(32));
}

std::string newCode()
{
    // The top of the range is left out, so that every remainder is as likely.
    constexpr std::uint32_t codes = 1'000'000;
    constexpr std::uint32_t limit = UINT32_MAX - UINT32_MAX % codes;
    std::uint32_t number = limit;
    while (number >= limit)
        std::memcpy(&number, randomBytes(sizeof(number)).data(), sizeof(number));
    auto digits = std::to_string(number % codes);
    return digits.insert(0, 6 - digits.size(), '0');
}

std::string sha256(std::string_view bytes)
{
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    SHA256(bytesOf(bytes), bytes.size(), bytesOf(digest));
    return digest;
}

std::string hmacSha256(std::string_view key, std::string_view bytes)
{
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    unsigned length = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), bytesOf(bytes), bytes.size(),
         bytesOf(digest), &length);
    return digest;
}

std::string base64(std::string_view bytes)
{
    std::string text(4 * ((bytes.size() + 2) / 3) + 1, '\0'); // OpenSSL ends it with a zero
    const int length = EVP_EncodeBlock(bytesOf(text), bytesOf(bytes), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string base64url(std::string_view bytes)
{
    auto text = base64(bytes);
    for (auto &character : text) {
        if (character == '+')
            character = '-';
        else if (character == '/')
            character = '_';
    }
    text.resize(std::min(text.size(), text.find('=')));
    return text;
}

std::string sha256Text(std::string_view text)
{
    return base64url(sha256(text));
}

std::string hexOf(std::string_view bytes)
{
    std::string digits;
    boost::algorithm::hex_lower(bytes.begin(), bytes.end(), std::back_inserter(digits));
    return digits;
}

bool isSameSecret(std::string_view left, std::string_view right)
{
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}
