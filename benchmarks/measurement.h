#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

/// Milliseconds that `work` takes.
template <typename Work>
double timed(const Work &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

/// The value below which the given part of `values` lies; 0.5 is the median. `values` is not empty.
inline double quantile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[size_t(part * double(values.size() - 1))];
}

/// One line of the benchmark table, in the form that scripts/bench.py joins.
class Figures
{
public:
    /// A figure that is only told.
    void report(const std::string &name, double value, const std::string &unit, const std::string &against)
    {
        m_results.push_back(line(name, value, unit, against, nullptr, nullptr));
    }

    /// A ratio that must not be above `limit`.
    void hold(const std::string &name, double ratio, const std::string &against, double limit)
    {
        m_results.push_back(line(name, ratio, "times", against, limit, ratio <= limit));
    }

    /// Writes them to the file and gives the exit status of the program.
    int writeTo(const char *path) const
    {
        FILE *out = fopen(path, "w");
        if (!out) {
            perror(path);
            return 1;
        }
        fprintf(out, "%s\n", m_results.dump(2).c_str());
        return fclose(out) == 0 ? 0 : 1;
    }

private:
    using Json = nlohmann::ordered_json;

    static Json line(const std::string &name, double value, const std::string &unit,
                     const std::string &against, const Json &limit, const Json &holds)
    {
        return {{"name", name},       {"value", value}, {"unit", unit},
                {"against", against}, {"limit", limit}, {"holds", holds}};
    }

    Json m_results = Json::array();
};
