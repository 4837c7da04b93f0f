#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Whom a message comes from.
struct MailSender
{
    std::string name; ///< may be empty
    std::string address;

    bool operator==(const MailSender &) const = default;

    /// Of "Quorvel <no-reply@example.org>" or an address alone, which may also be of this machine
    /// ("no-reply@localhost"). None where it is neither, or the name has control characters.
    static std::optional<MailSender> parse(std::string_view typed);
};
