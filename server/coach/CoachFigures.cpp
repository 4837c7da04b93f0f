#include "CoachFigures.h"

CoachFigures::CoachFigures(prometheus::Registry &registry)
    : m_calls(prometheus::BuildCounter()
                  .Name("quorvel_coach_calls_total")
                  .Help("Suggestions that were asked for, by how that ended")
                  .Register(registry))
    , m_inFlight(prometheus::BuildGauge()
                     .Name("quorvel_coach_calls_in_flight")
                     .Help("Suggestions that are under way")
                     .Register(registry)
                     .Add({}))
    , m_seconds(
          prometheus::BuildHistogram()
              .Name("quorvel_coach_call_seconds")
              .Help("How long a suggestion took, all tries together")
              .Register(registry)
              .Add({}, prometheus::Histogram::BucketBoundaries{0.25, 0.5, 1, 2.5, 5, 10, 20, 30, 45, 60}))
{
    // A figure that appears with its first event hides that event from a rate.
    m_calls.Add({{"outcome", "ok"}});
    for (const auto fault :
         {CoachFault::NotConfigured, CoachFault::Busy, CoachFault::Misconfigured, CoachFault::Overloaded,
          CoachFault::Unreachable, CoachFault::TimedOut, CoachFault::UnusableAnswer})
        m_calls.Add({{"outcome", std::string(nameOf(fault))}});
}

void CoachFigures::count(std::optional<CoachFault> fault)
{
    m_calls.Add({{"outcome", fault ? std::string(nameOf(*fault)) : "ok"}}).Increment();
}

void CoachFigures::tell(int inFlight)
{
    m_inFlight.Set(inFlight);
}

void CoachFigures::tell(std::chrono::duration<double> taken)
{
    m_seconds.Observe(taken.count());
}
