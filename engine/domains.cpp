#include "domains.h"

#include "browserAddress.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

std::optional<QString> hostOfUrl(const QString &url)
{
    // QUrl judges whether the text is a URL, but lower-cases and decodes the host, so that is read from the
    // text: what stands between "//" (after an optional scheme) and the next "/", "?" or "#".
    if (!isBrowserAddress(url))
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

DomainSet::DomainSet(const QStringList &entries)
{
    for (const auto &entry : entries) {
        if (const auto domain = normalizeDomain(entry); !domain.isEmpty())
            m_domains.insert(domain);
    }
}

bool DomainSet::contains(const QString &host) const
{
    if (m_domains.contains(host))
        return true;
    for (auto dot = host.indexOf(u'.'); dot >= 0; dot = host.indexOf(u'.', dot + 1)) {
        if (m_domains.contains(host.mid(dot + 1)))
            return true;
    }
    return false;
}
