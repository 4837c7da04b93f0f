#include "domains.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

std::optional<QString> hostOfUrl(const QString &url)
{
    // QUrl judges whether the text is a URL, but lower-cases and decodes the host, so that is read from the
    // text: what stands between "//" (after an optional scheme) and the next "/", "?" or "#".
    if (!QUrl(url, QUrl::StrictMode).isValid())
        return std::nullopt;
    static const QRegularExpression authorityPattern(
        uR"(^(?:[A-Za-z][A-Za-z0-9+.\-]*:)?//(?:[^/?#@]*@)?(\[[^\]/?#]*\]|[^/?#:@]*)(?::[0-9]*)?(?:[/?#]|$))"_s);
    const auto match = authorityPattern.match(url);
    const auto host = match.captured(1);
    return host.isEmpty() ? std::nullopt : std::optional(host);
}

QString normalizeDomain(const QString &text)
{
    auto domain = text.toLower().trimmed();
    if (const auto host = hostOfUrl(domain))
        domain = *host;
    domain = domain.section(u'/', 0, 0);
    while (domain.startsWith(u"www."))
        domain.remove(0, 4);
    return domain;
}

bool belongsToAnyDomain(const QString &host, const QStringList &domains)
{
    return std::any_of(domains.begin(), domains.end(), [&](const QString &entry) {
        const auto domain = normalizeDomain(entry);
        return !domain.isEmpty() && (host == domain || host.endsWith(u'.' + domain));
    });
}
