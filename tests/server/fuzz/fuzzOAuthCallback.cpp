// What any page may send the browser back with as if a provider had.
#include "OAuthCallback.h"
#include "require.h"
#include "textChecks.h"
#include "urlText.h"

#include <cstdint>

// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view query(reinterpret_cast<const char *>(data), size);
    if (const auto fields = queryFields(query)) {
        std::string written;
        for (const auto &[name, value] : *fields) {
            require(!hasControlCharacters(name) && !hasControlCharacters(value), "no control characters");
            written += (written.empty() ? "" : "&") + formText({{name, value}});
        }
        require(queryFields(written) == fields, "what is written again reads the same");
    }
    const auto callback = OAuthCallback::parse(query);
    if (!callback)
        return 0;
    require(size <= OAuthCallback::longestQuery);
    require(callback->state.size() == OAuthCallback::lengthOfState);
    require(callback->code.empty() != callback->error.empty(), "a code or an error");
    require(callback->code.size() <= OAuthCallback::longestCode);
    require(callback->issuer.value_or("").size() <= OAuthCallback::longestIssuer);
    return 0;
}
