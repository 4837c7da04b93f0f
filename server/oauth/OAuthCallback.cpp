#include "OAuthCallback.h"

#include "textChecks.h"
#include "urlText.h"

#include <algorithm>

namespace {

bool isState(std::string_view text)
{
    return text.size() == OAuthCallback::lengthOfState &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return isLetterOrDigit(character) || character == '-' || character == '_';
           });
}

bool isPrintable(std::string_view text, std::size_t longest)
{
    return text.size() <= longest && std::all_of(text.begin(), text.end(), [](char character) {
               return character == ' ' || isVisible(character);
           });
}

bool isAnswer(const OAuthCallback &callback)
{
    constexpr std::size_t longestError = 256;
    return isState(callback.state) && callback.code.empty() != callback.error.empty() &&
           isPrintable(callback.code, OAuthCallback::longestCode) &&
           isPrintable(callback.error, longestError) &&
           isPrintable(callback.issuer.value_or(""), OAuthCallback::longestIssuer);
}

} // namespace

std::optional<OAuthCallback> OAuthCallback::parse(std::string_view query)
{
    if (query.size() > longestQuery)
        return std::nullopt;
    const auto fields = queryFields(query);
    if (!fields)
        return std::nullopt;
    OAuthCallback callback;
    for (const auto &[name, value] : *fields) {
        if (name == "state")
            callback.state = value;
        else if (name == "code")
            callback.code = value;
        else if (name == "error")
            callback.error = value;
        else if (name == "iss")
            callback.issuer = value;
    }
    return isAnswer(callback) ? std::optional(std::move(callback)) : std::nullopt;
}
