#include "MailSender.h"

#include "textChecks.h"

namespace {

/// As mailAddress(), and besides of a host whose name has no full stop: a sender is the operator's own.
std::optional<std::string> senderAddress(std::string_view typed)
{
    if (auto address = mailAddress(typed))
        return address;
    constexpr std::string_view domain = ".localdomain";
    auto address = mailAddress(std::string(trimmed(typed)) + std::string(domain));
    if (address)
        address->resize(address->size() - domain.size());
    return address;
}

} // namespace

std::optional<MailSender> MailSender::parse(std::string_view typed)
{
    typed = trimmed(typed);
    std::string_view name;
    if (const auto bracket = typed.find('<'); bracket != std::string_view::npos && typed.ends_with('>')) {
        name = trimmed(typed.substr(0, bracket));
        typed = typed.substr(bracket + 1, typed.size() - bracket - 2);
    }
    auto address = senderAddress(typed);
    if (!address || hasControlCharacters(name))
        return std::nullopt;
    return MailSender{std::string(name), *std::move(address)};
}
