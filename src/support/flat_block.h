// The flat block in which a project stores an instance. Two formats: version 1, which is written,
// and version 0 of old projects.
#pragma once

#include <string_view>

#include "support/text.h"

struct FlatBlock {
    std::string_view filePath; // UTF-8, in the block; empty: none was chosen
    bool defaultsPending = true;
};

// Never reads past the end: a truncated block gives what is there, one of an unknown version gives
// a new instance.
FlatBlock readFlatBlock(std::string_view block);

// A block of version 1, including the terminating zero.
NarrowString flatBlockOf(std::string_view filePath, bool defaultsPending);
