// Name servers that do not answer: look-ups block a thread each, and there are few such threads.
#include "BeastHttpClient.h"

#include <algorithm>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/io_context.hpp>
#include <condition_variable>
#include <dlfcn.h>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <netdb.h>

using namespace std::chrono_literals;
using namespace testing;

namespace {

/// The names under .invalid that were looked up; "hangs.invalid" blocks until it is released.
class NameServer
{
public:
    void look(const std::string &name)
    {
        std::unique_lock lock(m_mutex);
        m_names.push_back(name);
        m_changed.wait(lock, [&] { return m_isReleased || name != "hangs.invalid"; });
    }

    void hang()
    {
        const std::lock_guard lock(m_mutex);
        m_names.clear();
        m_isReleased = false;
    }

    void release()
    {
        const std::lock_guard lock(m_mutex);
        m_isReleased = true;
        m_changed.notify_all();
    }

    std::vector<std::string> names()
    {
        const std::lock_guard lock(m_mutex);
        return m_names;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_names;
    bool m_isReleased = true;
};

NameServer nameServer;

/// Why the calls of these names failed, which are under way together.
std::vector<std::string> failuresOf(const std::vector<std::string> &names, std::chrono::milliseconds timeout)
{
    boost::asio::io_context context;
    const auto client = *BeastHttpClient::create();
    std::vector<std::string> failures;
    for (const auto &name : names) {
        HttpCall call;
        call.url = "http://" + name + "/";
        call.timeout = timeout;
        boost::asio::co_spawn(context, client->send(std::move(call)),
                              [&failures](const std::exception_ptr &, const Result<HttpAnswer> &answer) {
                                  failures.push_back(answer ? "" : answer.error().reason);
                              });
    }
    context.run();
    return failures;
}

} // namespace

/// In place of the system's, which it asks for all other names.
extern "C" int getaddrinfo(const char *name, const char *service, const addrinfo *hints, addrinfo **found)
{
    if (name && std::string_view(name).ends_with(".invalid")) {
        nameServer.look(name);
        return EAI_NONAME;
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(name, service, hints, found);
}

TEST(NameLookUps, areNotBegunForACallThatIsOver)
{
    nameServer.hang();
    std::vector<std::string> names(4, "hangs.invalid"); // as many as there are threads
    names.emplace_back("late.invalid");                 // stands in line
    EXPECT_THAT(failuresOf(names, 50ms), AllOf(SizeIs(5), Each(HasSubstr("it took too long"))));
    nameServer.release();
    failuresOf({"next.invalid", "next.invalid"}, 10s); // stand behind it
    EXPECT_THAT(nameServer.names(), Contains("next.invalid").Times(2));
    EXPECT_THAT(nameServer.names(), Not(Contains("late.invalid")));
}

TEST(NameLookUps, keepNobodyFromGoing)
{
    nameServer.hang();
    auto failures = std::async(std::launch::async, [] { return failuresOf({"hangs.invalid"}, 10ms); });
    const bool isOver = failures.wait_for(20s) == std::future_status::ready;
    nameServer.release();
    EXPECT_TRUE(isOver);
    EXPECT_THAT(failures.get(), ElementsAre("looking up hangs.invalid failed: it took too long"));
}
