// How many numbers a program hands from its vertex to its fragment stage.
//
// Drivers have a limit, and not each keeps it: Mesa's linker reports a program that exceeds it a
// little, and takes the process with it when a program exceeds it by far. So the count is made
// before a program is linked.
#pragma once

#include <cstdint>
#include <string_view>

// The components of all varyings that a generated fragment text reads, arrays with every element.
// Varyings that are declared and never named again need no room and do not count, as little as
// OpenGL's own (texture coordinates, colours), which drivers hold elsewhere. An array's bound may
// be made of numbers, constants and macros with + - * / and parentheses; one that is not counts as
// one element. At most 2^31, whatever the text says.
std::int64_t countVaryingComponents(std::string_view fragmentText);
