#pragma once

#include "Language.h"
#include "Refusal.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The method where a route may have it, with characters that live as long as the program; else empty.
std::string_view knownMethod(std::string_view method);

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

/// Whether no name or value could end a line and begin one that nobody meant.
bool areSendable(const HttpHeaders &headers);

/// A request as the routes see it: read whole, within the limits.
struct HttpRequest
{
    std::string method; ///< "GET"
    std::string path;   ///< as it came, undecoded and without the query: "/api/auth/email/start"
    std::string query;  ///< what follows the question mark, undecoded
    HttpHeaders headers;
    std::string body;
    std::string
        clientAddress; ///< of whoever asks, behind the proxies that are trusted: "203.0.113.7", "2001:db8::1"
    Language language = Language::English; ///< of an answer's sentences, by Accept-Language
    bool wantsJsonErrors = false;          ///< Accept names application/json

    /// The value of the first header of that name, in any case; empty where there is none.
    std::string_view header(std::string_view name) const;

    /// The token of "Authorization: Bearer TOKEN"; empty where there is none.
    std::string_view bearerToken() const;

    /// What a limit for one client counts by: its address, or the 64 bits of an IPv6 address that its owner
    /// cannot choose ("2001:db8::/64").
    std::string clientNetwork() const;
};

struct HttpResponse
{
    unsigned status = 200;
    std::string contentType = "application/json";
    std::string body;
    HttpHeaders headers; ///< further ones; those that every answer has come by themselves
};

/// Adds the header that says when to come again, where the refusal says that.
void addRetryAfter(HttpResponse &response, const Refusal &refusal);

/// The sentence in the request's language as plain UTF-8 text, or as {"error": sentence} where JSON is asked
/// for; with Retry-After where the refusal has one.
HttpResponse refuse(const HttpRequest &request, const Refusal &refusal);
