#include "emailRoutes.h"

#include "accountRefusals.h"
#include "codeMail.h"
#include "jsonBody.h"
#include "textChecks.h"

#include <array>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <spdlog/spdlog.h>
#include <string>
#include <utility>

namespace {

using boost::asio::awaitable;

constexpr std::chrono::seconds hour = std::chrono::hours(1);
constexpr std::chrono::seconds day = std::chrono::days(1);

HttpResponse answer(const boost::json::object &object)
{
    HttpResponse response;
    response.body = boost::json::serialize(object);
    return response;
}

HttpResponse unavailable(const HttpRequest &request, const Failure &failure)
{
    spdlog::error("{} does not work: {}", request.path, failure.reason);
    return refuse(request, refusals::unavailable());
}

/// Two counters that are used together: the client's and the address's.
class TwoLimits
{
public:
    struct Limit
    {
        std::string key;
        int most;
        std::chrono::seconds length;
    };

    TwoLimits(RateLimits &limits, Limit client, Limit address)
        : m_limits(limits)
        , m_client(std::move(client))
        , m_address(std::move(address))
    {}

    /// None where both are kept, else the answer.
    awaitable<std::optional<HttpResponse>> use(const HttpRequest &request)
    {
        for (const auto *limit : std::array{&m_client, &m_address}) {
            const auto wait = co_await m_limits.use(limit->key, limit->most, limit->length);
            if (!wait)
                co_return unavailable(request, wait.error());
            if (*wait)
                co_return refuse(request, refusals::tooMany(**wait));
        }
        co_return std::nullopt;
    }

    awaitable<void> giveBackClient() { return giveBack(m_client); }
    awaitable<void> giveBackAddress() { return giveBack(m_address); }

private:
    awaitable<void> giveBack(const Limit &limit)
    {
        const auto given = co_await m_limits.giveBack(limit.key, limit.length);
        if (!given) // it counts as one more, and nobody waits for it
            spdlog::warn("a use was not given back: {}", given.error().reason);
    }

    RateLimits &m_limits;
    Limit m_client;
    Limit m_address;
};

/// The code in a mail; `email` has passed mailAddress().
awaitable<HttpResponse> sendCode(const EmailSignIn &signIn, const HttpRequest &request, TwoLimits &limits,
                                 const std::string &email)
{
    const auto created = co_await signIn.codes.create(email);
    if (!created)
        co_return unavailable(request, created.error());
    if (const auto *const tooSoon = std::get_if<SignInCodes::TooSoon>(&*created)) {
        co_await limits.giveBackAddress();
        const refusals::CodeTooSoon reply(tooSoon->wait);
        co_return refuse(request, reply.refusal());
    }
    auto mail = codeMail(email, std::get<std::string>(*created), request.language);
    const auto sent = co_await signIn.mailer.send(std::move(mail));
    if (sent)
        co_return answer({{"sent", true}});
    spdlog::error("a code was not sent: {}", sent.error().reason);
    if (const auto discarded = co_await signIn.codes.discard(email); !discarded)
        spdlog::error("a code that was not sent stays: {}", discarded.error().reason);
    co_await limits.giveBackAddress();
    co_return refuse(request, refusals::mailFailed());
}

awaitable<HttpResponse> start(const EmailSignIn &signIn, const HttpRequest &request)
{
    const auto body = jsonObject(request.body);
    const auto typed = body ? textOf(*body, "email") : std::nullopt;
    if (!typed)
        co_return refuse(request, refusals::badRequest());
    const auto email = mailAddress(*typed);
    if (!email)
        co_return refuse(request, refusals::noAddress());
    TwoLimits limits(signIn.limits,
                     {"code:" + request.clientNetwork(), signIn.most.codesForClientAnHour, hour},
                     {"code:" + *email, signIn.most.codesForAddressADay, day});
    if (auto refused = co_await limits.use(request))
        co_return std::move(*refused);
    co_return co_await sendCode(signIn, request, limits, *email);
}

awaitable<HttpResponse> verify(const EmailSignIn &signIn, const HttpRequest &request)
{
    const auto body = jsonObject(request.body);
    const auto typed = body ? textOf(*body, "email") : std::nullopt;
    const auto code = body ? textOf(*body, "code") : std::nullopt;
    if (!typed || !code)
        co_return refuse(request, refusals::badRequest());
    const auto email = mailAddress(*typed);
    if (!email)
        co_return refuse(request, refusals::wrongCode());
    // Counted before anything is compared: many at the same time are as many.
    TwoLimits limits(signIn.limits,
                     {"wrong:" + request.clientNetwork(), signIn.most.wrongCodesFromClientAnHour, hour},
                     {"wrong:" + *email, signIn.most.wrongCodesForAddressADay, day});
    if (auto refused = co_await limits.use(request))
        co_return std::move(*refused);
    auto session = signIn.sessions.prepare(*email, "email");
    const auto verified =
        co_await signIn.codes.verify(*email, std::string(trimmed(*code)), std::move(session.store));
    if (!verified)
        co_return unavailable(request, verified.error());
    const bool isRight = verified->verdict == SignInCodes::Verdict::Right;
    // Where nothing was compared nothing was guessed: else anybody could keep an address from signing in.
    if (isRight || !verified->isCompared)
        co_await limits.giveBackAddress();
    if (!isRight)
        co_return refuse(request, refusals::wrongCode());
    co_await limits.giveBackClient();
    co_return answer({{"session", session.token}, {"email", *email}});
}

awaitable<HttpResponse> account(const EmailSignIn &signIn, const HttpRequest &request)
{
    const auto found = co_await signIn.sessions.find(std::string(request.bearerToken()));
    if (!found)
        co_return unavailable(request, found.error());
    if (!*found)
        co_return refuse(request, refusals::signInAgain());
    co_return answer({{"email", (*found)->email}});
}

} // namespace

void addEmailRoutes(Router &router, EmailSignIn signIn)
{
    // The router keeps the closures, and with them what the coroutines refer to.
    router.add("POST", "/api/auth/email/start",
               [signIn](const HttpRequest &request) { return start(signIn, request); });
    router.add("POST", "/api/auth/email/verify",
               [signIn](const HttpRequest &request) { return verify(signIn, request); });
    router.add("GET", "/api/account",
               [signIn](const HttpRequest &request) { return account(signIn, request); });
}
