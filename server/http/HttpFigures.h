#pragma once

#include <map>
#include <string_view>
#include <tuple>

namespace prometheus {
class Counter;
class Gauge;
class Histogram;
class Registry;
template <class T>
class Family;
} // namespace prometheus

/// What is counted of all requests. A look-up by labels in the registry takes a lock and makes a hash of
/// each, so what has been looked up is kept.
class HttpFigures
{
public:
    explicit HttpFigures(prometheus::Registry &registry);

    /// `route` and `method` must be few, and their characters must live on.
    void answered(std::string_view route, std::string_view method, unsigned status, double seconds);
    void refused(std::string_view reason);
    void connectionOpened();
    void connectionClosed();

private:
    prometheus::Family<prometheus::Counter> &m_requests;
    prometheus::Family<prometheus::Histogram> &m_seconds;
    prometheus::Family<prometheus::Counter> &m_refused;
    prometheus::Gauge &m_connections;
    std::map<std::tuple<std::string_view, std::string_view, unsigned>, prometheus::Counter *> m_requestsOf;
    std::map<std::string_view, prometheus::Histogram *> m_secondsOf;
};
