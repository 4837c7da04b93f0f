#pragma once

#include "Refusal.h"

#include <chrono>
#include <string>

namespace refusals {

/// What was typed is no address that mail can go to.
Refusal noAddress();
/// The code is not the one that was sent, or is spent, or is over, or there was none.
Refusal wrongCode();
/// The mail server did not take the message.
Refusal mailFailed();

/// Says how long to wait, in its own words.
class CodeTooSoon
{
public:
    explicit CodeTooSoon(std::chrono::seconds wait);

    /// Valid for as long as this object.
    Refusal refusal() const;

private:
    std::chrono::seconds m_wait;
    std::string m_english;
    std::string m_russian;
};

} // namespace refusals
