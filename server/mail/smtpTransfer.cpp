#include "smtpTransfer.h"

#include "TimeSource.h"
#include "mailHeaders.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <curl/curl.h>
#include <memory>
#include <spdlog/fmt/fmt.h>

namespace {

template <auto release>
struct Releasing
{
    template <class Thing>
    void operator()(Thing *thing) const
    {
        release(thing);
    }
};

using Transfer = std::unique_ptr<CURL, Releasing<curl_easy_cleanup>>;
using Address = std::unique_ptr<CURLU, Releasing<curl_url_cleanup>>;
using Lines = std::unique_ptr<curl_slist, Releasing<curl_slist_free_all>>;
using Body = std::unique_ptr<curl_mime, Releasing<curl_mime_free>>;

void append(Lines &lines, const std::string &line)
{
    if (auto *longer = curl_slist_append(lines.get(), line.c_str())) {
        (void)lines.release(); // belongs to the longer list
        lines.reset(longer);
    }
}

Address serverAddress(const SmtpSettings &settings)
{
    Address address(curl_url());
    const bool isTls = settings.security == SmtpSecurity::Tls;
    const auto port = std::to_string(settings.port);
    const bool isIPv6 = settings.host.find(':') != std::string::npos && !settings.host.starts_with('[');
    const auto host = isIPv6 ? '[' + settings.host + ']' : settings.host;
    if (curl_url_set(address.get(), CURLUPART_SCHEME, isTls ? "smtps" : "smtp", 0) != CURLUE_OK ||
        curl_url_set(address.get(), CURLUPART_HOST, host.c_str(), 0) != CURLUE_OK ||
        curl_url_set(address.get(), CURLUPART_PORT, port.c_str(), 0) != CURLUE_OK)
        address.reset();
    return address;
}

/// Lines in mail end with CR LF.
std::string mailText(const std::string &text)
{
    return boost::replace_all_copy(boost::replace_all_copy(text, "\r\n", "\n"), "\n", "\r\n");
}

void addPart(curl_mime *body, const std::string &text, const char *type)
{
    auto *part = curl_mime_addpart(body);
    const auto lines = mailText(text);
    curl_mime_data(part, lines.data(), lines.size());
    curl_mime_type(part, type);
    curl_mime_encoder(part, "quoted-printable");
}

void secure(CURL *transfer, const SmtpSettings &settings)
{
    curl_easy_setopt(transfer, CURLOPT_USE_SSL,
                     settings.security == SmtpSecurity::None ? CURLUSESSL_NONE : CURLUSESSL_ALL);
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(transfer, CURLOPT_SSLVERSION, CURL_SSLVERSION_TLSv1_2);
    if (!settings.certificateAuthorities.empty()) {
        curl_easy_setopt(transfer, CURLOPT_CAINFO, settings.certificateAuthorities.c_str());
        curl_easy_setopt(transfer, CURLOPT_CAPATH, nullptr); // else the system's count as well
    }
    if (!settings.user.empty()) {
        curl_easy_setopt(transfer, CURLOPT_USERNAME, settings.user.c_str());
        curl_easy_setopt(transfer, CURLOPT_PASSWORD, settings.password.c_str());
    }
}

/// When to give up.
struct Patience
{
    std::chrono::steady_clock::time_point deadline;
    const std::atomic<bool> &isStopping;

    bool isOver() const { return isStopping || std::chrono::steady_clock::now() >= deadline; }
};

/// Called at least once a second.
int endWhenOver(void *patience, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return static_cast<const Patience *>(patience)->isOver() ? 1 : 0;
}

void limit(CURL *transfer, Patience &patience)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(patience.deadline - std::chrono::steady_clock::now());
    curl_easy_setopt(transfer, CURLOPT_NOSIGNAL, 1L); // signals and threads do not go together
    curl_easy_setopt(transfer, CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(left.count())));
    curl_easy_setopt(transfer, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(transfer, CURLOPT_XFERINFOFUNCTION, endWhenOver);
    curl_easy_setopt(transfer, CURLOPT_XFERINFODATA, &patience);
    // Says QUIT while these limits hold. A connection that is kept says it in the end without them, and a
    // server that does not answer would hold the thread for two minutes more.
    curl_easy_setopt(transfer, CURLOPT_FORBID_REUSE, 1L);
    // The environment of the service says nothing about mail.
    curl_easy_setopt(transfer, CURLOPT_PROXY, "");
    curl_easy_setopt(transfer, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
}

/// The server's own words are left out: they may repeat the address.
Result<> outcome(CURL *transfer, CURLcode code, const Patience &patience)
{
    if (code == CURLE_OK)
        return {};
    if (patience.isStopping)
        return Failure{"the service stops before the mail server has taken a message"};
    if (patience.isOver() || code == CURLE_OPERATION_TIMEDOUT)
        return Failure{"the mail server has not taken a message in time"};
    long reply = 0;
    curl_easy_getinfo(transfer, CURLINFO_RESPONSE_CODE, &reply);
    return Failure{fmt::format("the mail server has not taken a message: {} (curl {}, last reply {})",
                               curl_easy_strerror(code), static_cast<int>(code), reply)};
}

} // namespace

Result<> sendBySmtp(const SmtpSettings &settings, const MailSender &from, const Mail &mail,
                    std::chrono::steady_clock::time_point deadline, const std::atomic<bool> &isStopping)
{
    Patience patience{deadline, isStopping};
    if (patience.isOver())
        return Failure{"a message has waited too long for its turn at the mail server"};
    const auto address = serverAddress(settings);
    const Transfer transfer(curl_easy_init());
    if (!address || !transfer)
        return Failure{"the mail server's name makes no address"};

    Lines headers;
    for (const auto &header : mailHeaders(from, mail, systemTime()))
        append(headers, header);
    append(headers, "Content-Type: multipart/alternative");
    Lines recipients;
    append(recipients, mail.to);
    const Body body(curl_mime_init(transfer.get()));
    addPart(body.get(), mail.text, "text/plain; charset=utf-8");
    addPart(body.get(), mail.html, "text/html; charset=utf-8"); // last: the one to prefer

    curl_easy_setopt(transfer.get(), CURLOPT_CURLU, address.get());
    secure(transfer.get(), settings);
    limit(transfer.get(), patience);
    curl_easy_setopt(transfer.get(), CURLOPT_MAIL_FROM, from.address.c_str());
    curl_easy_setopt(transfer.get(), CURLOPT_MAIL_RCPT, recipients.get());
    curl_easy_setopt(transfer.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(transfer.get(), CURLOPT_MIMEPOST, body.get());
    return outcome(transfer.get(), curl_easy_perform(transfer.get()), patience);
}
