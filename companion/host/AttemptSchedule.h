#pragma once

#include <chrono>

/// When the relay looks for the program again. All times are of the steady clock.
class AttemptSchedule
{
public:
    using Clock = std::chrono::steady_clock;

    /// While nothing has been heard of a socket. The watch tells of one at once; this is for what it misses.
    static constexpr std::chrono::seconds safetyPause{60};

    /// After a connection that came to nothing; doubled each time.
    static constexpr std::chrono::seconds shortestPause{1};
    static constexpr std::chrono::seconds longestPause{20};

    explicit AttemptSchedule(Clock::time_point now) { somethingNew(now); }

    Clock::time_point due() const { return m_due; }

    /// A socket has appeared: try at once, and some more times within about a second, for its program may not
    /// listen to it yet.
    void somethingNew(Clock::time_point now);

    /// The attempt found no program.
    void foundNobody(Clock::time_point now);

    /// The program was there, and the connection is over. One that `workedWell` lets the pauses begin anew.
    void lost(Clock::time_point now, bool workedWell);

private:
    Clock::time_point m_due;
    int m_quickTries = 0; ///< how many are left
    std::chrono::milliseconds m_quickPause{0};
    std::chrono::seconds m_pause = shortestPause;
};
