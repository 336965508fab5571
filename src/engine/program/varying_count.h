// Counts the components of the varyings between a program's vertex and fragment shader.
//
// OpenGL has a limit for them. Mesa's linker reports a program that exceeds the limit by a little,
// and crashes on one that exceeds it by far. So the engine counts before it links.
#pragma once

#include <cstdint>
#include <string_view>

// The number of components of all varyings that a generated fragment shader reads, including all
// elements of arrays. Varyings that are only declared do not count, and neither do OpenGL's own
// (texture coordinates, colours), which have a separate limit. An array's size may consist of
// numbers, constants and macros with + - * / and parentheses; any other size counts as 1. At most
// 2^31.
std::int64_t countVaryingComponents(std::string_view fragmentText);
