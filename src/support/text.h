// The string and vector types of all data that the module keeps. They are on the host's heap, so
// growing and destroying one needs a running command.
//
// Narrow text is UTF-8, wide text UTF-16.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/heap.h"

using NarrowString = std::basic_string<char, std::char_traits<char>, aeAllocator<char>>;
using WideString = std::basic_string<char16_t, std::char_traits<char16_t>, aeAllocator<char16_t>>;

template<class T>
using HostVector = std::vector<T, aeAllocator<T>>;

// Concatenates two texts; the whole length is reserved first.
NarrowString concatenate(const NarrowString& head, const char* tail);
WideString concatenate(const WideString& head, const char16_t* tail);
