// Values given on the command line, `NAME=V[,V...]`, written into a graph's parameters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/pb_graph.h"

namespace pbhost {

struct ParameterSetting {
    std::string name;
    std::vector<std::string> values;
};

// Throws Failure (Usage) when the text has no '=' or no name.
ParameterSetting parseSetting(const std::string& text);

// The name is the file's own. Throws Failure (Usage) for a name that the graph does not have, with
// the names that it has, and for values that do not fit the parameter.
void applySetting(const pbGraph& graph, bool isGraph, const ParameterSetting& setting);

// Gives each point whose default is a part of the picture its place, in pixels.
void placeRelativePoints(const pbGraph& graph, unsigned width, unsigned height);

} // namespace pbhost
