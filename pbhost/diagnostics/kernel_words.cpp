#include "pbhost/diagnostics/kernel_words.h"

#include <array>
#include <utility>

#include "pbhost/diagnostics/source_text.h"

namespace pbhost {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 15> kernelNames = {{
    {"vec2", "float2"},
    {"vec3", "float3"},
    {"vec4", "float4"},
    {"ivec2", "int2"},
    {"ivec3", "int3"},
    {"ivec4", "int4"},
    {"bvec2", "bool2"},
    {"bvec3", "bool3"},
    {"bvec4", "bool4"},
    {"mat2", "float2x2"},
    {"mat3", "float3x3"},
    {"mat4", "float4x4"},
    {"sampler2D", "image4"},
    {"smoothstep", "smoothStep"},
    {"inversesqrt", "inverseSqrt"},
}};

// Mesa's names of tokens in a syntax error.
constexpr std::array<std::pair<std::string_view, std::string_view>, 10> tokenNames = {{
    {"NEW_IDENTIFIER", "a new name"},
    {"IDENTIFIER", "a name"},
    {"TYPE_IDENTIFIER", "a type"},
    {"FIELD_SELECTION", "a component"},
    {"INTCONSTANT", "an integer"},
    {"FLOATCONSTANT", "a number"},
    {"BOOLCONSTANT", "true or false"},
    {"DOT_TOK", "'.'"},
    {"INC_OP", "'++'"},
    {"DEC_OP", "'--'"},
}};

template<class Table>
std::string_view lookUp(const Table& table, std::string_view word) {
    for (const auto& [from, to] : table)
        if (from == word)
            return to;
    return {};
}

} // namespace

// Empty for a word that stays.
std::string KernelWords::kernelWord(std::string_view word) const {
    if (findWord(file_, word) != std::string_view::npos)
        return "";
    for (const std::string_view prefix : {"tvek_", "tveg_", "_tvek", "_tveg"})
        if (word.starts_with(prefix) &&
            findWord(file_, word.substr(prefix.size())) != std::string_view::npos)
            return std::string(word.substr(prefix.size()));
    return std::string(lookUp(kernelNames, word));
}

std::string KernelWords::replace(std::string_view text, bool hasNames) const {
    std::string result;
    bool isQuoted = false;
    for (std::size_t at = 0; at < text.size();) {
        if (!isNameByte(text[at])) {
            isQuoted = text[at] == '`' || (isQuoted && text[at] != '\'');
            result += text[at++];
            continue;
        }
        const std::string_view word = wordAt(text, at);
        const std::string replaced = kernelWord(word);
        result += replaced.empty() ? word : std::string_view(replaced);
        if (hasNames && !isQuoted && !replaced.empty() && !lookUp(kernelNames, word).empty()) {
            result.append(" (").append(word).append(")");
            hasNames = false;
        }
        at += word.size();
    }
    return result;
}

std::string KernelWords::replacedIn(std::string_view text) const {
    return replace(text, false);
}

std::string KernelWords::explained(std::string_view message) const {
    constexpr std::string_view syntaxError = "syntax error, ";
    if (!message.starts_with(syntaxError))
        return replace(message, true);
    std::string text;
    for (std::size_t at = 0; at < message.size();) {
        const std::string_view word = wordAt(message, at);
        const std::string_view named = word.empty() ? "" : lookUp(tokenNames, word);
        text += word.empty() ? message.substr(at, 1) : named.empty() ? word : named;
        at += word.empty() ? 1 : word.size();
    }
    return replace(text, true);
}

} // namespace pbhost
