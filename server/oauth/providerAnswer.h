#pragma once

#include "HttpClient.h"
#include "OAuthFault.h"

#include <boost/json/object.hpp>
#include <cstddef>
#include <string_view>

/// So much of a provider's answer is read: ten times what any sends.
inline constexpr std::size_t largestProviderAnswer = 128 * 1024;

/// The provider's fault: what the person reads is the same in all cases. `what` says which answer, "token".
OAuthFault providerFault(std::string_view what, std::string_view reason);

/// The JSON object of an answer of status 200.
OAuthResult<boost::json::object> providerObject(const Result<HttpAnswer> &answer, std::string_view what);

/// As providerObject(), of the token's address: a code that is not taken is no fault of the provider.
OAuthResult<boost::json::object> tokenObject(const Result<HttpAnswer> &answer);

/// The text of that field; empty where it is none or longer than `longest` bytes.
std::string textField(const boost::json::object &object, std::string_view name, std::size_t longest);
