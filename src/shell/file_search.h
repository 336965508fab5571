// Finds a file that has moved with its project to another machine.
#pragma once

#include "support/files.h"
#include "support/heap.h"

// The first file of exactly that name in the folder or up to two levels of folders under it: at
// each level the files go first, in the order of the system's listing. `depth` is that of the
// folder, 0 at the root. True, with the path in `result`, if there is one.
bool searchFile(const _JST::Folder<aeAllocator>& folder, const _JST::String<aeAllocator>& name,
                int depth, _JST::String<aeAllocator>& result);
