#pragma once

#include "coachRefusals.h"

#include <chrono>
#include <optional>
#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>

/// What an operator sees of the coach.
class CoachFigures
{
public:
    /// The registry outlives it.
    explicit CoachFigures(prometheus::Registry &registry);

    /// One suggestion that was asked for has ended so; none: well.
    void count(std::optional<CoachFault> fault);
    void tell(int inFlight);
    void tell(std::chrono::duration<double> taken);

private:
    prometheus::Family<prometheus::Counter> &m_calls;
    prometheus::Gauge &m_inFlight;
    prometheus::Histogram &m_seconds;
};
