// Searches for a file that has moved with its project to another machine.
#pragma once

#include "support/files.h"
#include "support/heap.h"

// Finds the first file of exactly that name in the folder or up to two levels of folders below: the
// files of a folder are searched before its folders, both in the order of the system's listing.
// Pass 0 for `depth`, the level of the folder. Returns true, with the path in `result`, if there is
// one.
bool searchFile(const _JST::Folder<aeAllocator>& folder, const _JST::String<aeAllocator>& name,
                int depth, _JST::String<aeAllocator>& result);
