// Reads a graph file, an XML document, into the model.
//
// Nothing is resolved or validated: node ids, kernel names and image names are compared when the
// graph is built. Nothing is reported; everything that can be read of a document with errors is
// read.
#pragma once

#include <string_view>

#include "pixelbender/model.h"

class TiXmlDocument;

// Returns 0 if a "graph" element was read, else 1, with `info` unchanged. `info` must be newly
// constructed. A text that exceeds the limits of xml_guard.h is treated as one without a graph.
int readGraphText(std::string_view text, pbGraphInfo& info);
int readGraphDocument(const TiXmlDocument& document, pbGraphInfo& info);

// Parses a value that is written as a plain list: "0.5,0.25". Stops at the first invalid component;
// the rest is zero. Numbers are clamped to the range of their type.
pbValue parseValueText(const char* text, pbElementType type);
