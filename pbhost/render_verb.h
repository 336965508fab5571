// The verb `render`: runs a kernel or graph over pictures and writes the result.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pbhost/picture.h"

class pbGraph;

namespace pbhost {

struct RenderRequest {
    std::string file; // .pbk or .pbg
    std::vector<std::string> inputs;
    std::string output;
    std::vector<std::string> settings;                 // NAME=V[,V...]
    std::optional<Depth> depth;                        // default: the first picture's
    std::optional<std::pair<unsigned, unsigned>> size; // pixels; default: the first picture's
};

// Throws Failure; the output file is then as it was. Notes go to standard error.
void render(const RenderRequest& request);

// Pixels in, pixels out: the result has the size and depth of `output`, which it replaces. The
// pictures feed the graph's images in order; those that get none are transparent.
void renderPictures(pbGraph& graph, std::vector<Picture>& inputs, Picture& output);

} // namespace pbhost
