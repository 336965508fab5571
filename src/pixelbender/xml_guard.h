// Rejects texts that the XML parser cannot process safely.
//
// TinyXML recurses once for each level of nesting and compares each new attribute with all others
// of its element, so a malformed text could overflow the stack or take very long. The guard scans a
// text by TinyXML's own rules, in linear time and without recursion, and counts levels and
// attributes.
#pragma once

#include <string_view>

// More than any realistic graph needs.
inline constexpr int maxXmlNesting = 256;
inline constexpr int maxXmlAttributes = 256; // of one element

// False if parsing the text would exceed one of the limits. The text ends at its first zero byte,
// as it does for the parser.
bool isWithinXmlLimits(std::string_view text, int nestingLimit = maxXmlNesting,
                       int attributeLimit = maxXmlAttributes);
