// The elements of an XML document with their places, and its first error.
//
// The graph reader reads what it can of any document and keeps no places. The outline reads the
// same text again, in linear time and without recursion; offsets are in bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "pixelbender/source_map.h"

namespace pbhost {

struct XmlAttribute {
    std::string_view name;
    std::size_t at = 0;          // of the name
    std::string value;           // with the entities decoded
    std::size_t valueAt = 0;     // of the value, behind its quote
    std::size_t valueLength = 0; // in the document
};

struct XmlElement {
    std::string_view name;
    std::size_t at = 0; // of the name
    std::vector<XmlAttribute> attributes;
    std::vector<std::size_t> children; // indices of the outline's elements
    // The element's text if it is the first thing in the element, as the graph reader reads it:
    // without entities, each run of blanks one blank; a CDATA section is unchanged.
    bool hasText = false;
    std::string text;
    SourceMap textMap; // from the text to the document

    // Null if there is no such attribute.
    const XmlAttribute* attribute(std::string_view name) const;
};

struct XmlFault {
    std::size_t at = 0;
    std::size_t length = 0;
    std::string message; // empty: there is none
};

struct XmlOutline {
    explicit XmlOutline(std::string_view document);

    // The first child of the document with that name; null if there is none.
    const XmlElement* root(std::string_view name) const;

    // The children of an element with that name.
    std::vector<const XmlElement*> children(const XmlElement& parent, std::string_view name) const;

    std::vector<XmlElement> elements; // in the document's order
    std::vector<std::size_t> roots;
    XmlFault fault; // the graph reader ignores the document from there on
};

} // namespace pbhost
