// The command `render`: applies the effect to a picture and writes the result.
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
    std::string file;    // .pbk or .pbg; empty: given by the project
    std::string project; // project to open
    std::vector<std::string> inputs;
    std::string output;
    std::vector<std::string> layers;   // CONTROL=PICTURE
    std::vector<std::string> settings; // CONTROL=V[,V...]
    std::string downsample = "1";      // X[,Y]: divisor of the resolution
    std::optional<Depth> depth;        // default: the depth of the project or of the first picture
    std::string time;                  // seconds; empty: the project's time, or 0
    std::string size;                  // WIDTHxHEIGHT if there is no picture; empty: 640x360
    std::string save;                  // project to write; may be empty
    FindingOptions findings; // about the kernel or graph
};

// Throws Failure (RenderFailed) if an output file cannot be created; called before the work.
void checkOutputPlaces(const RenderRequest& request);

// Starts reading the layer's picture on another thread while the session starts. Returns no future
// if there is no picture or a project names it. The request must outlive the future; get() throws
// what reading threw.
std::future<LayerSource> readAhead(const RenderRequest& request);

// Renders and writes the output file. Throws Failure and then leaves an existing output file
// unchanged. Notes go to standard error. Consumes `ahead`.
void render(Session& session, const RenderRequest& request, std::future<LayerSource> ahead);

} // namespace pbhost
