// Reads a graph file, an XML document, into the model.
//
// Nothing is resolved or validated: node ids, kernel names and image names are only compared when
// the graph is built. Nothing is reported; a document with faults is read as far as it makes sense.
#pragma once

#include <string_view>

#include "pixelbender/model.h"

class TiXmlDocument;

// 0 when a "graph" element was read, else 1, and `info` stays as it is. `info` must be freshly
// constructed. A text whose elements nest deeper than any graph needs counts as one without a
// graph.
int readGraphText(std::string_view text, pbGraphInfo& info);
int readGraphDocument(const TiXmlDocument& document, pbGraphInfo& info);

// A value written as a plain list: "0.5,0.25". A scan stops at the first thing that does not fit;
// the rest stays zero. Numbers out of range are held at the range's end.
pbValue parseValueText(const char* text, pbElementType type);
