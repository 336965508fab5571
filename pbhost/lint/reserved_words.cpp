#include "pbhost/lint/reserved_words.h"

#include <algorithm>
#include <array>

namespace pbhost {

namespace {

// Sorted. Without the words that the kernel language itself uses: input, output, union.
constexpr std::array<std::string_view, 49> reserved = {
    "active",
    "asm",
    "cast",
    "class",
    "common",
    "default",
    "double",
    "dvec2",
    "dvec3",
    "dvec4",
    "enum",
    "extern",
    "external",
    "filter",
    "fixed",
    "fvec2",
    "fvec3",
    "fvec4",
    "goto",
    "half",
    "hvec2",
    "hvec3",
    "hvec4",
    "inline",
    "interface",
    "long",
    "namespace",
    "noinline",
    "packed",
    "partition",
    "public",
    "resource",
    "sampler1D",
    "sampler1DShadow",
    "sampler2DRect",
    "sampler2DRectShadow",
    "sampler2DShadow",
    "sampler3D",
    "samplerCube",
    "short",
    "sizeof",
    "static",
    "switch",
    "template",
    "this",
    "typedef",
    "unsigned",
    "using",
    "volatile",
};

static_assert(std::is_sorted(reserved.begin(), reserved.end()));

} // namespace

bool isReservedWord(std::string_view word) {
    return std::binary_search(reserved.begin(), reserved.end(), word);
}

} // namespace pbhost
