#include "signInPage.h"

#include "htmlText.h"
#include "secrets.h"
#include "urlText.h"

#include <spdlog/fmt/fmt.h>

namespace {

/// Colours and shapes are those of the desktop program.
constexpr std::string_view style = R"(
:root { color-scheme: dark; }
* { box-sizing: border-box; }
body { margin: 0; min-height: 100vh; display: grid; place-items: center; padding: 24px;
  color: rgba(255, 255, 255, .94); font: 16px/1.5 Inter, "Segoe UI", Roboto, Helvetica, Arial, sans-serif;
  background: radial-gradient(60rem 40rem at 15% -10%, rgba(161, 84, 255, .22), transparent 70%),
    radial-gradient(50rem 36rem at 100% 110%, rgba(69, 255, 143, .14), transparent 70%),
    linear-gradient(#090a12, #010205) fixed; }
main { width: 100%; max-width: 420px; padding: 36px 32px; text-align: center; border-radius: 20px;
  background: rgba(36, 35, 46, .62); border: 1px solid rgba(255, 255, 255, .14); box-shadow: 0 24px 60px rgba(0, 0, 0, .45); }
.brand { width: 56px; height: 56px; margin: 0 auto 20px; border-radius: 16px; display: grid; place-items: center;
  font-size: 28px; font-weight: 800; color: #fff; background: linear-gradient(135deg, #a154ff, #6c5bd6 50%, #2fae82); }
h1 { margin: 0 0 8px; font-size: 24px; line-height: 1.25; font-weight: 700; }
p { margin: 0; color: rgba(255, 255, 255, .72); overflow-wrap: anywhere; text-wrap: balance; }
.account { margin-top: 12px; color: #94ffc2; font-weight: 600; }
a { display: block; margin: 28px 0 0; padding: 12px 20px; border-radius: 12px; font-weight: 700; text-decoration: none;
  color: #030505; background: linear-gradient(#94ffc2, #45ff8f); }
a:hover { filter: brightness(1.06); }
a:focus-visible { outline: 3px solid #a154ff; outline-offset: 3px; }
p.quiet { margin-top: 16px; font-size: 14px; color: rgba(255, 255, 255, .62); }
)";

constexpr std::string_view page = R"(<!DOCTYPE html>
<html lang="{language}">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="robots" content="noindex">
{refresh}<title>{title} · Quorvel</title>
<style>{style}</style>
</head>
<body>
<main>
<div class="brand" aria-hidden="true">Q</div>
<h1>{title}</h1>
{content}</main>
</body>
</html>
)";

constexpr LocalText signedIn{"You are signed in", "Вход выполнен"};
constexpr LocalText opensItself{"Quorvel opens by itself. If it does not, press the button.",
                                "Quorvel откроется сам. Если этого не произошло, нажми на кнопку."};
constexpr LocalText openIt{"Open Quorvel", "Открыть Quorvel"};
constexpr LocalText closeThis{"You can close this page afterwards.", "После этого страницу можно закрыть."};
constexpr LocalText didNotWork{"Sign-in did not work", "Войти не получилось"};
constexpr LocalText goBack{"You can close this page and go back to Quorvel.",
                           "Эту страницу можно закрыть и вернуться в Quorvel."};

HttpResponse pageOf(Language language, const LocalText &title, const std::string &refresh,
                    const std::string &content)
{
    // Nothing but the style above counts, whatever else should get onto the page.
    static const auto policy = fmt::format("default-src 'none'; style-src 'sha256-{}'; base-uri 'none'; "
                                           "form-action 'none'; frame-ancestors 'none'",
                                           base64(sha256(style)));
    HttpResponse response;
    response.contentType = "text/html; charset=utf-8";
    response.headers = HttpHeaders{{"Content-Security-Policy", policy},
                                   {"Referrer-Policy", "no-referrer"},
                                   {"Cache-Control", "no-store"},
                                   {"X-Frame-Options", "DENY"}};
    response.body = fmt::format(page, fmt::arg("language", codeOf(language)),
                                fmt::arg("title", htmlText(title.in(language))), fmt::arg("style", style),
                                fmt::arg("refresh", refresh), fmt::arg("content", content));
    return response;
}

} // namespace

HttpResponse signedInPage(Language language, std::string_view session, std::string_view email,
                          std::string_view provider)
{
    const auto link = htmlText("quorvel://auth?" +
                               formText({{"session", session}, {"email", email}, {"provider", provider}}));
    const auto refresh = fmt::format("<meta http-equiv=\"refresh\" content=\"0;url={}\">\n", link);
    const auto content = fmt::format(
        "<p>{}</p>\n<p class=\"account\">{}</p>\n<a href=\"{}\">{}</a>\n<p class=\"quiet\">{}</p>\n",
        htmlText(opensItself.in(language)), htmlText(email), link, htmlText(openIt.in(language)),
        htmlText(closeThis.in(language)));
    return pageOf(language, signedIn, refresh, content);
}

HttpResponse faultPage(Language language, const Refusal &refusal)
{
    const auto content = fmt::format("<p>{}</p>\n<p class=\"quiet\">{}</p>\n",
                                     htmlText(refusal.sentence.in(language)), htmlText(goBack.in(language)));
    auto response = pageOf(language, didNotWork, "", content);
    response.status = refusal.status;
    addRetryAfter(response, refusal);
    return response;
}
