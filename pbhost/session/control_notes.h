// What the file says about its controls and the effect does not pass on: descriptions of
// parameters, types of input images.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "hostkit/host.h"

namespace pbhost {

struct ControlNotes {
    // By the control's name, without the "[0]", "[1]" ... of components.
    std::map<std::string, std::string> descriptions;
    std::vector<std::string> imageTypes; // of the inputs, in order; the first is the layer's
};

// Throws Failure if the file cannot be read.
ControlNotes notesOf(hostkit::Host& host, const std::string& file);

// The description for a control's name; empty if there is none.
std::string descriptionOf(const ControlNotes& notes, const std::string& controlName);

} // namespace pbhost
