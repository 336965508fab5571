// The keys of metadata and the fields that they set, for both grammars. The syntax of values
// depends on the grammar.
#pragma once

#include <string_view>

#include "pixelbender/model.h"

inline constexpr std::string_view versionKey = "version"; // of a kernel or graph, an integer
// Of a parameter: two numbers.
inline constexpr std::string_view pointDefaultKey = "aePointRelativeDefaultValue";

// The field of a key whose value has the parameter's type; null for any other key.
pbValueSlot pbParameter::*valueField(std::string_view key);

// Writes a text into the field of a key.
template<class Owner>
using SetText = void (*)(Owner& owner, std::string_view text);

// Null for a key that has no text.
SetText<pbParameter> parameterTextSetter(std::string_view key);
SetText<pbMetadata> programTextSetter(std::string_view key); // of a kernel or graph
