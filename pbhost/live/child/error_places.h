// The lines of a kernel or graph that an error message is about.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pbhost::live {

struct ErrorPlace {
    unsigned line = 0;   // of the source, from 1
    unsigned column = 0; // from 1; 0: unknown
    std::string message;
};

// Finds the source lines that the message of a failed load quotes. A line that occurs more than
// once in the source gives its first place.
std::vector<ErrorPlace> errorPlaces(std::string_view message, std::string_view source);

} // namespace pbhost::live
