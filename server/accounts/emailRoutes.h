#pragma once

#include "Mailer.h"
#include "RateLimits.h"
#include "Router.h"
#include "Sessions.h"
#include "SignInCodes.h"

/// How often the same client, or anybody with the same mail address, may try. A client is an address of the
/// network: a whole school may stand behind one.
struct EmailSignInLimits
{
    int codesForClientAnHour = 30;
    int wrongCodesFromClientAnHour = 60;
    int codesForAddressADay = 10;
    int wrongCodesForAddressADay = 20;
};

/// What sign-in by a code that is sent by mail consists of. All of it outlives the routes.
struct EmailSignIn
{
    SignInCodes &codes;
    Sessions &sessions;
    RateLimits &limits;
    Mailer &mailer;
    EmailSignInLimits most = {};
};

/// POST /api/auth/email/start {"email"} sends a code and answers {"sent": true}; POST /api/auth/email/verify
/// {"email", "code"} answers {"session", "email"}; GET /api/account answers {"email"} of whoever asks. No
/// answer tells whether an address has an account.
void addEmailRoutes(Router &router, EmailSignIn signIn);
