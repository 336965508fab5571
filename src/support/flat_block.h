// The block of bytes that a project stores of an instance. Two forms: version 1 as it is written,
// and version 0, which old projects hold.
#pragma once

#include <string_view>

#include "support/text.h"

struct FlatBlock {
    std::string_view filePath; // UTF-8, in the block; empty: none was chosen
    bool defaultsPending = true;
};

// Never reads past the end: a block that is cut short gives what is there, one of an unknown
// version is that of a new instance.
FlatBlock readFlatBlock(std::string_view block);

// A block of version 1, with the final zero.
NarrowString flatBlockOf(std::string_view filePath, bool defaultsPending);
