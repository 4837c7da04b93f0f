#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Random bytes of the operating system's generator, as OpenSSL hands them out. Ends the program where there
/// are none: nothing secret can be made then.
std::string randomBytes(std::size_t count);

/// Characters of a token.
inline constexpr std::size_t tokenLength = 43;

/// A token of 256 random bits, in base64url.
std::string newToken();

/// A decimal code of six digits, "000000" to "999999", every one as likely as any other.
std::string newCode();

/// 32 bytes.
std::string sha256(std::string_view bytes);

/// 32 bytes. The key may have any length.
std::string hmacSha256(std::string_view key, std::string_view bytes);

/// base64 with padding (RFC 4648, chapter 4).
std::string base64(std::string_view bytes);

/// base64url without padding (RFC 4648, chapter 5).
std::string base64url(std::string_view bytes);

/// The SHA-256 of a text in base64url: what is kept of a token.
std::string sha256Text(std::string_view text);

/// Lower-case hexadecimal digits.
std::string hexOf(std::string_view bytes);

/// Whether they are the same, in a time that depends on their lengths alone.
bool isSameSecret(std::string_view left, std::string_view right);
