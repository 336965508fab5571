// The loop of a render process: answers the server's requests, one after the other.
//
// A request is a message with "do": "load", "picture", "pixel", "savePicture" or "saveProject", and
// a number "id"; see Instance for the rest. The reply repeats both, or is "failed" with "what" (the
// request's "do"), "code", "text" and "places" (line, column, message).
#pragma once

#include "pbhost/session/session.h"

namespace pbhost::live {

// Returns when the other end of the socket is closed.
void answerRequests(int socket, const SessionOptions& options);

} // namespace pbhost::live
