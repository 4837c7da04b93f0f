#pragma once

#include <boost/system/result.hpp>
#include <boost/throw_exception.hpp>
#include <stdexcept>
#include <string>

/// Why something did not work, for the log: English, one line, without secrets and addresses. What a user
/// reads is a Refusal.
struct Failure
{
    std::string reason;

    bool operator==(const Failure &) const = default;
};

/// What boost::system::result calls where a value is taken that is not there: a mistake of ours.
// NOLINTNEXTLINE(readability-identifier-naming): Boost names it
[[noreturn]] inline void throw_exception_from_error(const Failure &failure,
                                                    const boost::source_location &place)
{
    boost::throw_with_location(std::logic_error(failure.reason), place);
}

/// A value, or why there is none.
template <class T = void>
using Result = boost::system::result<T, Failure>;
