// The tokens of a kernel, as the kernel reader's scanner finds them, with their offsets.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "pixelbender/shader_reader.h"

namespace pbhost {

struct KernelToken {
    ShaderReader::TokenKind kind;
    ShaderReader::State state; // behind the token
    std::string_view text;     // a part of the source
    std::size_t offset;
};

// All tokens but blanks and comments. Those of a quoted text are among them; their state tells.
// Views of `source`. Needs a running command.
std::vector<KernelToken> tokensOf(std::string_view source);

// Whether a token is part of a quoted text, quotes included.
bool isQuoted(const KernelToken& token);

// The name behind the last `kernel`, which the reader takes; empty: none.
std::string_view kernelName(const std::vector<KernelToken>& tokens);

} // namespace pbhost
