#include "HttpFigures.h"

#include <prometheus/counter.h>
#include <prometheus/family.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>
#include <string>

HttpFigures::HttpFigures(prometheus::Registry &registry)
    : m_requests(prometheus::BuildCounter()
                     .Name("quorvel_http_requests_total")
                     .Help("Requests answered")
                     .Register(registry))
    , m_seconds(prometheus::BuildHistogram()
                    .Name("quorvel_http_request_seconds")
                    .Help("From a request's last byte to its answer's")
                    .Register(registry))
    , m_refused(prometheus::BuildCounter()
                    .Name("quorvel_http_refused_total")
                    .Help("Requests and connections refused before any route saw them")
                    .Register(registry))
    , m_connections(prometheus::BuildGauge()
                        .Name("quorvel_http_connections")
                        .Help("Connections that are open")
                        .Register(registry)
                        .Add({}))
{}

void HttpFigures::answered(std::string_view route, std::string_view method, unsigned status, double seconds)
{
    auto &counter = m_requestsOf[{route, method, status}];
    if (!counter)
        counter = &m_requests.Add({{"route", std::string(route)},
                                   {"method", std::string(method)},
                                   {"status", std::to_string(status)}});
    counter->Increment();
    auto &histogram = m_secondsOf[route];
    if (!histogram)
        histogram =
            &m_seconds.Add({{"route", std::string(route)}},
                           prometheus::Histogram::BucketBoundaries{0.001, 0.0025, 0.005, 0.01, 0.025, 0.05,
                                                                   0.1, 0.25, 0.5, 1, 2.5, 5, 10, 30, 60});
    histogram->Observe(seconds);
}

void HttpFigures::refused(std::string_view reason)
{
    m_refused.Add({{"reason", std::string(reason)}}).Increment();
}

void HttpFigures::connectionOpened()
{
    m_connections.Increment();
}

void HttpFigures::connectionClosed()
{
    m_connections.Decrement();
}
