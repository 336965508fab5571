// The command `render`: runs the effect over a picture, once, and writes what comes out.
#pragma once

#include <future>
#include <optional>
#include <string>
#include <vector>

#include "pbhost/pictures/picture.h"
#include "pbhost/session/scene.h"
#include "pbhost/session/session.h"

namespace pbhost {

struct RenderRequest {
    std::string file;    // .pbk or .pbg; empty: the project has one
    std::string project; // to open
    std::vector<std::string> inputs;
    std::string output;
    std::vector<std::string> layers;   // CONTROL=PICTURE
    std::vector<std::string> settings; // CONTROL=V[,V...]
    std::string downsample = "1";      // X[,Y]: a part of the resolution, 2 for a half
    std::optional<Depth> depth;        // default: the project's, or the first picture's
    std::string time;                  // seconds; empty: the project's, or 0
    std::string size;                  // WIDTHxHEIGHT without a picture; empty: 640x360
    std::string save;                  // the project to write; may be empty
    bool isStrict = false;             // about a graph's wiring
};

// Throws Failure (RenderFailed) for an output whose place cannot be written to, before any work.
void checkOutputPlaces(const RenderRequest& request);

// Starts to read the layer's picture on a thread of its own, so that the session can begin
// meanwhile. Nothing, where there is none or a project is needed to tell which. The request must
// outlive it; what reading throws comes out of get().
std::future<LayerSource> readAhead(const RenderRequest& request);

// Throws Failure; the output file is then as it was. Notes go to standard error. What was read
// ahead is taken.
void render(Session& session, const RenderRequest& request, std::future<LayerSource> ahead);

} // namespace pbhost
