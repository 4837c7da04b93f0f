#pragma once

#include "BackendRequest.h"

/// The request that an answer with this status and "Location" sends on to; none where it is no redirect or
/// one that is not followed: to nowhere, to another scheme than http and https, or from https to http.
///
/// Status 307 and 308 keep what is asked, the others make it a GET. Another scheme, host or port does not get
/// to see the authorization.
std::optional<BackendRequest> redirected(const BackendRequest &request, int status,
                                         const QByteArray &location);
