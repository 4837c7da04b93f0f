#pragma once

#include "Refusal.h"

/// Why there is no suggestion.
enum class CoachFault {
    NotConfigured, ///< the operator has named no endpoint
    Busy,          ///< as many suggestions are under way as may be
    Misconfigured, ///< the endpoint will not have us: its key, its address, its model
    Overloaded,    ///< the endpoint asks to be asked less often
    Unreachable,   ///< no whole answer came, or one that tells of a fault of its own
    TimedOut,
    UnusableAnswer, ///< the model refused, did not finish or wrote something else
};

/// What stands in figures and in the log: "not_configured", ...
std::string_view nameOf(CoachFault fault);

namespace refusals {

/// The desktop program shows these behind "API note: ", below the plan it has made by itself.
Refusal coach(CoachFault fault);
Refusal topicTooLong();
Refusal coachHourUsedUp(std::chrono::seconds retryAfter);
Refusal coachDayUsedUp(std::chrono::seconds retryAfter);

} // namespace refusals
