// The HTTP server of `live`: the page's files, dropped pictures, downloads, and one WebSocket for
// each tab, which has its own render process.
//
// One thread does all the work, so that render processes can be forked.
//
// Messages to the page, beside the replies of the render process (child/work.h):
//   "hello"    "file", "pictures", "clock": the first message
//   "pictures" "pictures": the list has grown
//   "source"   "text": precedes the reply to a load
//   "changed"  the file or a picture was saved
//   "ended"    "text": the render process crashed or was stopped; the next load starts another
// Requests of the page beside those of the render process: "openProject" with "text", answered like
// a load. "savePicture" takes an "extension"; it and "saveProject" are answered with an "url".
#pragma once

#include <functional>
#include <string>

#include "pbhost/live/server/workspace.h"
#include "pbhost/session/session.h"

namespace pbhost::live {

// Serves until the process ends; `onReady` is called with the page's address. Throws Failure if the
// address cannot be bound.
void serve(Workspace& workspace, const SessionOptions& options,
           const std::function<void(const std::string& url)>& onReady);

} // namespace pbhost::live
