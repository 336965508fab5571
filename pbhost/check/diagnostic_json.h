// Findings as JSON, for the format `json` and between processes.
#pragma once

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

// Texts must be UTF-8 to be written; what is not is replaced by the writer.
Json asJson(const Diagnostic& diagnostic);
Json asJson(const Diagnostics& found);

// Throws an exception of the JSON library for anything that asJson does not write.
Diagnostics diagnosticsOf(const Json& json);

} // namespace pbhost
