// What the X11 adapters cost each second on a busy machine, against a scan of /proc without a memory. Both
// are measured in turn in the same run, one round a second as the program does it, so that the looks that are
// due only every ten seconds are paid for here too. Takes DISPLAY from the environment; a window manager must
// run.
//
// applicationScan [FILE]: writes its result to FILE, or to the standard output.

#include "Sleepers.h"
#include "X11Applications.h"
#include "X11Idle.h"
#include "fullProcessScan.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

using namespace std::chrono_literals;
using Milliseconds = std::chrono::duration<double, std::milli>;

namespace {

constexpr int extraProcesses = 400;
constexpr int rounds = 21;
constexpr auto oldEnough = 11s; // processes younger than ten seconds are looked at more often
constexpr double largestShare = 0.5;

template <typename Work>
double timed(const Work &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return Milliseconds(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int count, char **words)
{
    const auto connection = std::make_shared<X11Connection>();
    if (!connection->usable()) {
        fprintf(stderr, "applicationScan: no X server answers on DISPLAY\n");
        return 1;
    }
    X11Applications applications(connection, {});
    const X11Idle idle(connection);
    const Sleepers sleepers(extraProcesses);
    applications.running();
    std::this_thread::sleep_for(oldEnough);
    applications.running();

    std::vector<double> ours;
    std::vector<double> plain;
    size_t seen = 0;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(timed([&] {
            seen += applications.frontmost().has_value();
            seen += applications.running().size();
            seen += idle.sinceLastInput().has_value();
        }));
        plain.push_back(timed([&] { seen += fullProcessScan().processes; }));
        std::this_thread::sleep_for(1s);
    }

    const double against = median(plain);
    const double value = median(ours);
    const double limit = against * largestShare;
    const auto results = nlohmann::ordered_json::array(
        {{{"name", "applications and idle time, once a second among 400 more processes"},
          {"value", value},
          {"unit", "ms"},
          {"against", against},
          {"limit", limit},
          {"holds", seen > 0 && sleepers.count() == extraProcesses && value <= limit}}});
    FILE *out = count > 1 ? fopen(words[1], "w") : stdout;
    if (!out) {
        perror(words[1]);
        return 1;
    }
    fprintf(out, "%s\n", results.dump(2).c_str());
    return out == stdout || fclose(out) == 0 ? 0 : 1;
}
