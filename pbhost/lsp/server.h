// A language server: it checks the documents that an editor has open, while they are edited.
//
// Programs are compiled by a child process (check_worker), so a crash of the driver is a finding.
// One thread waits for the client, the child and the end of a pause in typing.
#pragma once

namespace pbhost {

// Serves the client at two descriptors until it sends `exit` or closes the input. A document is
// checked when it has not changed for a moment, and for that many seconds at most; 0: no limit.
// Throws Failure if the input is not that of a client, or if it ends without `shutdown`.
void serveLanguage(int input, int output, double timeoutSeconds);

} // namespace pbhost
