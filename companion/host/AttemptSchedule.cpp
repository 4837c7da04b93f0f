#include "AttemptSchedule.h"

#include <algorithm>

using namespace std::chrono_literals;

void AttemptSchedule::somethingNew(Clock::time_point now)
{
    m_due = now;
    m_quickTries = 6;
    m_quickPause = 20ms; // 20 + 40 + … + 640: a little over a second in all
}

void AttemptSchedule::foundNobody(Clock::time_point now)
{
    if (m_quickTries == 0) {
        m_due = now + safetyPause;
        return;
    }
    --m_quickTries;
    m_due = now + m_quickPause;
    m_quickPause *= 2;
}

void AttemptSchedule::lost(Clock::time_point now, bool workedWell)
{
    m_quickTries = 0;
    if (workedWell)
        m_pause = shortestPause;
    m_due = now + m_pause;
    m_pause = std::min(2 * m_pause, longestPause);
}
