#include "quorvelUrls.h"

using namespace Qt::StringLiterals;

QStringList quorvelUrls(const QStringList &texts)
{
    QStringList urls;
    for (const auto &text : texts) {
        if (text.startsWith("quorvel:"_L1))
            urls.append(text);
    }
    return urls;
}
