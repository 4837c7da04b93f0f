#pragma once

#include "Http.h"

#include <ctime>
#include <string>
#include <string_view>

/// What an answer's head says besides what its handler said.
struct ResponseFrame
{
    std::string_view requestId;
    std::string_view date;
    bool closesConnection = false;
    bool namesKeepAlive = false; ///< a client of HTTP 1.0 wants to be told that the connection stays
};

/// Whether it may be sent: a status from 200 to 599, and no name or value that could end a line and begin one
/// that nobody meant.
bool isSendable(const HttpResponse &response);

/// Adds the answer's head to `bytes`: what each answer has, then the headers of the handler; where it names
/// one that each has, ours stands.
void appendHead(std::string &bytes, const HttpResponse &response, const ResponseFrame &frame);

/// Whether an answer of this status has a body at all.
bool hasBody(unsigned status);

/// "Sun, 06 Nov 1994 08:49:37 GMT"
std::string httpDate(std::time_t seconds);
