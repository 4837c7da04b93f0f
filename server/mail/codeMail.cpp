#include "codeMail.h"

#include "htmlText.h"

#include <spdlog/fmt/fmt.h>

namespace {

struct Words
{
    LocalText subject;
    LocalText before;
    LocalText after;
    LocalText notAsked;
};

// The code stands in the subject. Whoever waits for it sits at the computer to study: a glance at the
// notification is enough, and the mailbox with all that is new in it stays closed. Somebody else's glance at
// the locked telephone gains little: the code works once, for ten minutes, for a sign-in that has to be begun
// within them, and no study data is behind it. Most telephones show the first line of a message beside its
// subject anyway.
constexpr Words words{{"{} is your Quorvel code", "{} — твой код для Quorvel"},
                      {"Your code to sign in to Quorvel:", "Твой код для входа в Quorvel:"},
                      {"Type it in the Quorvel window within 10 minutes. It works once.",
                       "Введи его в окне Quorvel в течение 10 минут. Он действует один раз."},
                      {"If you did not ask for a code, ignore this message: without the code nobody can sign "
                       "in with your address. "
                       "Do not pass it on to anyone.",
                       "Если это не твой запрос, просто не обращай внимания на письмо: без кода никто не "
                       "войдёт с твоей почтой. "
                       "Никому не передавай этот код."}};

/// Only what every mail program draws: one table, styles at the elements, nothing from elsewhere.
constexpr std::string_view page = R"(<!DOCTYPE html>
<html lang="{language}">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="dark light">
<title>{subject}</title>
</head>
<body style="margin:0;padding:0;background-color:#090a12">
<table role="presentation" width="100%" cellpadding="0" cellspacing="0" border="0" bgcolor="#090a12">
<tr><td align="center" style="padding:32px 16px">
<table role="presentation" width="100%" cellpadding="0" cellspacing="0" border="0" bgcolor="#171822"
 style="max-width:440px;border-radius:16px;font-family:Inter,'Segoe UI',Roboto,Helvetica,Arial,sans-serif">
<tr><td style="padding:28px 32px 0;font-size:18px;font-weight:700;color:#f2f2f3">Quorvel</td></tr>
<tr><td style="padding:20px 32px 0;font-size:16px;line-height:24px;color:#d2d2d6">{before}</td></tr>
<tr><td style="padding:16px 32px 0">
<div style="padding:16px 0 16px 8px;border-radius:12px;background-color:#090a12;text-align:center;font-size:36px;line-height:44px;font-weight:700;letter-spacing:8px;color:#6cffa8">{code}</div>
</td></tr>
<tr><td style="padding:16px 32px 0;font-size:16px;line-height:24px;color:#d2d2d6">{after}</td></tr>
<tr><td style="padding:16px 32px 28px;font-size:13px;line-height:20px;color:#a0a0a8">{notAsked}</td></tr>
</table>
</td></tr>
</table>
</body>
</html>
)";

} // namespace

Mail codeMail(const std::string &to, const std::string &code, Language language)
{
    const auto subject = fmt::format(fmt::runtime(words.subject.in(language)), code);
    const auto before = words.before.in(language);
    const auto after = words.after.in(language);
    const auto notAsked = words.notAsked.in(language);
    return {to, subject, fmt::format("{}\n\n{}\n\n{}\n\n{}\n", before, code, after, notAsked),
            fmt::format(page, fmt::arg("language", codeOf(language)), fmt::arg("subject", htmlText(subject)),
                        fmt::arg("before", htmlText(before)), fmt::arg("code", htmlText(code)),
                        fmt::arg("after", htmlText(after)), fmt::arg("notAsked", htmlText(notAsked)))};
}
