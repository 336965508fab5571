// The command `render`: applies effects to a picture or to the frames of a sequence and writes the
// result.
#pragma once

#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "pbhost/render/render_plan.h"
#include "pbhost/session/session.h"

namespace pbhost {

// The folders into which the command writes.
std::vector<std::filesystem::path> outputFolders(const RenderRequest& request);

// Starts to read the layer's picture, or makes an empty one, on another thread. The plan must
// outlive the future.
std::future<LayerSource> readAhead(const RenderPlan& plan);

// Renders one picture, and writes it and the project.
void renderPicture(Session& session, const RenderPlan& plan, std::future<LayerSource> layer);

// Renders and writes the output file, or the files of the frames. Returns the text for standard
// output: the picture if the output is "-". Throws Failure and then leaves an existing output file
// unchanged. Notes go to standard error.
std::string render(RenderRequest request, const SessionOptions& options);

} // namespace pbhost
