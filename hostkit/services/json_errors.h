// Errors of the JSON library in plain words.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace hostkit {

// What is wrong with a file, as the end of a sentence: the place of a syntax error, a key that is
// missing, a value of another type.
std::string plainJsonError(const nlohmann::json::exception& error);

} // namespace hostkit
