#include "backendRedirects.h"

#include <QString>

using namespace Qt::StringLiterals;

namespace {

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool keepsTheBody(int status)
{
    return status == 307 || status == 308;
}

bool isFollowed(const QUrl &from, const QUrl &to)
{
    if (!to.isValid() || to.host().isEmpty())
        return false;
    return to.scheme() == "https"_L1 || (to.scheme() == "http"_L1 && from.scheme() == "http"_L1);
}

int portOf(const QUrl &url)
{
    return url.port(url.scheme() == "https"_L1 ? 443 : 80);
}

bool isSameOrigin(const QUrl &one, const QUrl &other)
{
    return one.scheme() == other.scheme() && one.host() == other.host() && portOf(one) == portOf(other);
}

} // namespace

std::optional<BackendRequest> redirected(const BackendRequest &request, int status,
                                         const QByteArray &location)
{
    if (!isRedirect(status) || location.isEmpty())
        return std::nullopt;
    const auto target = request.url.resolved(QUrl::fromEncoded(location, QUrl::StrictMode));
    if (!isFollowed(request.url, target))
        return std::nullopt;

    auto next = request;
    next.url = target;
    if (!keepsTheBody(status))
        next.body.reset();
    if (!isSameOrigin(request.url, target))
        next.authorization.clear();
    return next;
}
