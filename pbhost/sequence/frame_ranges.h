// Lists of frames as text, such as "1-100x2,110,120-110".
#pragma once

#include <string>
#include <vector>

namespace pbhost {

// The frames in the order of the text, each once: numbers and ranges FIRST-LAST or FIRST-LASTxSTEP,
// separated by commas, which may be negative and descend. Throws Failure (Usage).
std::vector<long> parseFrames(const std::string& text);

// A text that parseFrames turns into these frames.
std::string framesText(const std::vector<long>& frames);

} // namespace pbhost
