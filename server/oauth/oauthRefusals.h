#pragma once

#include "Refusal.h"

#include <string_view>

namespace refusals {

/// This service has no client id of that provider ("google" or "yandex").
Refusal providerNotConfigured(std::string_view provider);
/// The provider did not answer, or not with what the protocol asks for.
Refusal providerUnavailable();
/// The provider does not vouch for an address of this account.
Refusal noVerifiedAddress();
/// An unknown state, one that was used or is too old, or a code that the provider does not take.
Refusal signInOver();
/// The person has said no.
Refusal signInCancelled();
/// What came back is no answer of a provider.
Refusal badCallback();

} // namespace refusals
