#pragma once

#include "Refusal.h"
#include "Result.h"

#include <boost/system/result.hpp>
#include <string>

/// Why a sign-in by a provider ends: what the person reads, and what the log says (as in Failure).
struct OAuthFault
{
    Refusal refusal;
    std::string reason;
};

/// As for Failure: a value was taken that is not there.
// The name is what boost::system::result calls. NOLINTNEXTLINE(readability-identifier-naming)
[[noreturn]] inline void throw_exception_from_error(const OAuthFault &fault,
                                                    const boost::source_location &place)
{
    throw_exception_from_error(Failure{fault.reason}, place);
}

template <class T>
using OAuthResult = boost::system::result<T, OAuthFault>;
