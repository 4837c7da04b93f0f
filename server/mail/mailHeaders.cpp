#include "mailHeaders.h"

#include "secrets.h"
#include "textChecks.h"

#include <algorithm>
#include <spdlog/fmt/chrono.h>
#include <spdlog/fmt/fmt.h>

namespace {

bool isPlain(std::string_view text)
{
    constexpr std::size_t longest = 60; // with the header's name still one line of 78
    return text.size() <= longest && text.find("=?") == std::string_view::npos &&
           std::all_of(text.begin(), text.end(),
                       [](char character) { return character == ' ' || isVisible(character); });
}

/// The most whole characters from the beginning of `text` that `most` bytes hold.
std::string_view firstBytes(std::string_view text, std::size_t most)
{
    std::size_t length = 0;
    while (length < text.size()) {
        const auto next = firstCharacters(text.substr(length), 1).size();
        if (length + next > most)
            break;
        length += next;
    }
    return text.substr(0, length);
}

/// A name before an address: in quotation marks, or as encoded words.
std::string displayName(std::string_view name)
{
    if (!isPlain(name))
        return headerText(name);
    std::string quoted = "\"";
    for (const char character : name) {
        if (character == '"' || character == '\\')
            quoted += '\\';
        quoted += character;
    }
    return quoted + '"';
}

std::string mailbox(const MailSender &sender)
{
    if (sender.name.empty())
        return sender.address;
    return fmt::format("{} <{}>", displayName(sender.name), sender.address);
}

} // namespace

std::string headerText(std::string_view text)
{
    if (isPlain(text))
        return std::string(text);
    // 45 bytes are 60 characters of base64, 72 with what stands around them: RFC 2047 allows 75.
    constexpr std::size_t bytesOfWord = 45;
    std::string encoded;
    while (!text.empty()) {
        const auto part = firstBytes(text, bytesOfWord);
        encoded += fmt::format("{}=?UTF-8?B?{}?=", encoded.empty() ? "" : "\r\n ", base64(part));
        text.remove_prefix(part.size());
    }
    return encoded;
}

std::string mailDate(std::chrono::sys_seconds time)
{
    return fmt::format("{:%a, %d %b %Y %H:%M:%S} +0000",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}

std::vector<std::string> mailHeaders(const MailSender &from, const Mail &mail, std::chrono::sys_seconds now)
{
    const auto domain = from.address.substr(from.address.find('@') + 1);
    return {"From: " + mailbox(from), "To: " + mail.to, "Subject: " + headerText(mail.subject),
            "Date: " + mailDate(now), fmt::format("Message-ID: <{}@{}>", newToken(), domain),
            // Keeps replies of absence and the like from coming back (RFC 3834).
            "Auto-Submitted: auto-generated"};
}
