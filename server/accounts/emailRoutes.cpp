#include "emailRoutes.h"

#include "Limit.h"
#include "accountRefusals.h"
#include "codeMail.h"
#include "jsonBody.h"
#include "signedInAccount.h"
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

/// What one client and one mail address count in together.
struct TwoLimits
{
    std::array<Limit, 2> both;

    const Limit &client() const { return both[0]; }
    const Limit &address() const { return both[1]; }
};

/// The code in a mail; `email` has passed mailAddress().
awaitable<HttpResponse> sendCode(const EmailSignIn &signIn, const HttpRequest &request,
                                 const TwoLimits &limits, const std::string &email)
{
    const auto created = co_await signIn.codes.create(email);
    if (!created)
        co_return unavailable(request, created.error());
    if (const auto *const tooSoon = std::get_if<SignInCodes::TooSoon>(&*created)) {
        co_await giveBack(signIn.limits, limits.address());
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
    co_await giveBack(signIn.limits, limits.address());
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
    const TwoLimits limits{{Limit{"code:" + request.clientNetwork(), signIn.most.codesForClientAnHour, hour},
                            Limit{"code:" + *email, signIn.most.codesForAddressADay, day}}};
    if (const auto refusal = co_await useEach(signIn.limits, limits.both))
        co_return refuse(request, *refusal);
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
    const TwoLimits limits{
        {Limit{"wrong:" + request.clientNetwork(), signIn.most.wrongCodesFromClientAnHour, hour},
         Limit{"wrong:" + *email, signIn.most.wrongCodesForAddressADay, day}}};
    if (const auto refusal = co_await useEach(signIn.limits, limits.both))
        co_return refuse(request, *refusal);
    auto session = signIn.sessions.prepare(*email, "email");
    const auto verified =
        co_await signIn.codes.verify(*email, std::string(trimmed(*code)), std::move(session.store));
    if (!verified)
        co_return unavailable(request, verified.error());
    const bool isRight = verified->verdict == SignInCodes::Verdict::Right;
    // Where nothing was compared nothing was guessed: else anybody could keep an address from signing in.
    if (isRight || !verified->isCompared)
        co_await giveBack(signIn.limits, limits.address());
    if (!isRight)
        co_return refuse(request, refusals::wrongCode());
    co_await giveBack(signIn.limits, limits.client());
    co_return answer({{"session", session.token}, {"email", *email}});
}

awaitable<HttpResponse> account(const EmailSignIn &signIn, const HttpRequest &request)
{
    const auto who = co_await signedInAccount(signIn.sessions, request);
    if (const auto *const refusal = std::get_if<Refusal>(&who))
        co_return refuse(request, *refusal);
    co_return answer({{"email", std::get<Account>(who).email}});
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
