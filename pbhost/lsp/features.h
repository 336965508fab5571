// What the language server says about a document: hover, completion, symbols.
//
// Offsets are bytes of the document. The results are objects of the Language Server Protocol.
#pragma once

#include <cstddef>
#include <string>

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

// A document of an editor.
struct LspDocument {
    std::string uri;
    std::string file; // path, with the extension that tells a kernel from a graph
    std::string text;
};

// Positions count lines from 0 and UTF-16 code units from 0.
Json lspPosition(const SourceText& source, std::size_t offset);
std::size_t offsetOfPosition(const SourceText& source, const Json& position);

Json lspHover(const LspDocument& document, std::size_t offset); // null if there is nothing to say
Json lspCompletion(const LspDocument& document, std::size_t offset);
Json lspSymbols(const LspDocument& document);
Json lspDiagnostics(const LspDocument& document, const Diagnostics& found);

} // namespace pbhost
