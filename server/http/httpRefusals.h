#pragma once

#include "Refusal.h"

namespace refusals {

/// There is no such path.
Refusal notFound();
/// The path is known, but not with this method.
Refusal methodNotAllowed();
/// The request did not come whole within its time.
Refusal tooSlow();
/// The body is larger than any route takes.
Refusal bodyTooLarge();
/// The request's target is longer than any of ours.
Refusal targetTooLong();
/// A body that is not application/json.
Refusal notJson();
/// An expectation other than 100-continue.
Refusal unknownExpectation();
/// All headers together are too large.
Refusal headTooLarge();
/// A method or a coding of the body that nothing here knows.
Refusal notImplemented();
/// A version of HTTP other than 1.0 and 1.1.
Refusal unknownVersion();
/// The handler did not answer in time.
Refusal tookTooLong();
/// All connections that there may be are taken.
Refusal tooManyConnections();

} // namespace refusals
