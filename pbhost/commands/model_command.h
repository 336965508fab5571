// The command `model`: prints the model that the readers make of a file as one JSON object.
#pragma once

#include <string>

namespace pbhost {

// The object as indented text with a line end. Throws Failure.
std::string modelAsJson(const std::string& path);

} // namespace pbhost
