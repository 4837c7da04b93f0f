#pragma once

#include "Mailer.h"

#include <optional>
#include <string>
#include <vector>

/// Keeps what would be sent, or fails.
class FakeMailer : public Mailer
{
public:
    boost::asio::awaitable<Result<>> send(Mail mail) override
    {
        if (problem)
            co_return *problem;
        sent.push_back(std::move(mail));
        co_return Result<>();
    }

    /// The six digits of the last message.
    std::string lastCode() const
    {
        const auto &text = sent.back().text;
        std::string digits;
        for (const char character : text) {
            const bool isDigit = character >= '0' && character <= '9';
            digits = isDigit ? digits + character : std::string();
            if (digits.size() == 6)
                return digits;
        }
        return "";
    }

    std::optional<Failure> problem;
    std::vector<Mail> sent;
};
