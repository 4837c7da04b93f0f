// What any page may have the desktop hand over as the end of a sign-in.
#include "AuthCallback.h"
#include "controlCharacters.h"
#include "require.h"

#include <cstdint>

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto url = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto callback = readAuthCallback(url);
    if (!callback)
        return 0;
    require(url.size() <= longestAuthCallback && url.contains(QLatin1String("session=")));
    require(!callback->session.isEmpty() && callback->session.size() < url.size());
    require(!callback->email || !callback->email->isEmpty());
    for (const auto &value :
         {callback->session, callback->email.value_or(QString()), callback->provider.value_or(QString())})
        require(!hasControlCharacters(value) && value.isValidUtf16());
    require(!providerName(*callback).isEmpty());
    return 0;
}
