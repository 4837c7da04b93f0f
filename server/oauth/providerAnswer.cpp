#include "providerAnswer.h"

#include "jsonBody.h"
#include "oauthRefusals.h"

#include <spdlog/fmt/fmt.h>

OAuthFault providerFault(std::string_view what, std::string_view reason)
{
    return {refusals::providerUnavailable(), fmt::format("{}: {}", what, reason)};
}

OAuthResult<boost::json::object> providerObject(const Result<HttpAnswer> &answer, std::string_view what)
{
    if (!answer)
        return providerFault(what, answer.error().reason);
    if (answer->status != 200)
        return providerFault(what, fmt::format("status {}", answer->status));
    auto object = jsonObject(answer->body, largestProviderAnswer);
    if (!object)
        return providerFault(what, "no JSON object, or too large a one");
    return *std::move(object);
}

OAuthResult<boost::json::object> tokenObject(const Result<HttpAnswer> &answer)
{
    if (answer && answer->status == 400) {
        const auto object = jsonObject(answer->body, largestProviderAnswer);
        if (object && textField(*object, "error", 64) == "invalid_grant")
            return OAuthFault{refusals::signInOver(), "token: the code is not taken"};
    }
    return providerObject(answer, "token");
}

std::string textField(const boost::json::object &object, std::string_view name, std::size_t longest)
{
    const auto text = textOf(object, name);
    return text && text->size() <= longest ? std::string(*text) : std::string();
}
