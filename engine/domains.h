#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

/// The host of a URL letter for letter as it stands there, without user and port; none where the text is not
/// a URL or has no host.
std::optional<QString> hostOfUrl(const QString &url);

/// A host or a list entry in the form in which they are compared: lower case, trimmed, a full URL reduced to
/// its host, no path and no leading "www.". May be empty. Ports, users and trailing dots are not treated.
QString normalizeDomain(const QString &text);

/// The domains of a list, each standing for itself and everything below it.
class DomainSet
{
public:
    explicit DomainSet(const QStringList &entries);

    /// Whether `host`, already normalized, is one of them or lies below one. Costs one look-up a label.
    bool contains(const QString &host) const;

private:
    QSet<QString> m_domains;
};
