// What a page needs to know about the loaded file and its controls.
#pragma once

#include <cstddef>
#include <string>

#include "hostkit/host.h"
#include "pbhost/files/json_text.h"
#include "pbhost/session/control_notes.h"
#include "pbhost/session/scene.h"

namespace pbhost::live {

// controlAsJson, and: "range" the values that can be typed (also of kinds whose listings do not
// show it), "slider" the slider's range, "label" a checkbox's text, "description"
// of the parameter, which may be empty.
Json controlFacts(const Scene& scene, std::size_t index, const ControlNotes& notes);

// "name", "vendor", "version", "description" of a kernel or graph.
Json aboutFile(hostkit::Host& host, const std::string& file);

} // namespace pbhost::live
