// The requests of one tab: adds to them what only the server knows, before they go to the render
// process, and makes its replies fit for the page.
#pragma once

#include <string>

#include "pbhost/live/child/message.h"
#include "pbhost/live/server/workspace.h"

namespace pbhost::live {

class PageRequests {
public:
    // The workspace must outlive this object.
    explicit PageRequests(Workspace& shared);

    // The request for the render process: with files for the numbers of pictures, and the places of
    // files to be written or read, which a page cannot choose. Throws Failure (Usage), or an
    // exception of the JSON library, for invalid requests.
    Data complete(Data request) const;

    // Replaces the files in a reply by numbers of pictures and addresses of downloads, takes the
    // temporary folder out of messages, and takes over the file of a load.
    void adapt(Data& reply);

    // The file of the reply or request, for the page's source view; empty if it cannot be read.
    std::string source() const;

    const std::string& file() const { return file_; } // kernel or graph, absolute; may be empty

private:
    void completeLoad(Data& request) const;

    Workspace& workspace_;
    std::string file_;
};

} // namespace pbhost::live
