// Keeps away from the XML parser what it cannot take.
//
// TinyXML calls itself once for each level of nesting and searches an element's attributes for each
// new one, so a hostile text could exhaust the stack or the user's patience. The guard reads a text
// by TinyXML's own rules, in linear time and without recursion, and knows how deep it would go.
#pragma once

#include <string_view>

// More than any graph needs.
inline constexpr int maxXmlNesting = 256;
inline constexpr int maxXmlAttributes = 256; // of one element

// False when parsing the text would go beyond one of the limits. The text ends at its first zero
// byte, as it does for the parser.
bool isWithinXmlLimits(std::string_view text, int nestingLimit = maxXmlNesting,
                       int attributeLimit = maxXmlAttributes);
