// The files of the page (pbhost/live/page), which the build puts into the program.
#pragma once

#include <span>
#include <string_view>

namespace pbhost::live {

struct PageFile {
    std::string_view name;
    std::string_view content;
};

// In the order of their names. Defined in a generated file.
std::span<const PageFile> pageFiles();

// Null if there is none.
const PageFile* findPageFile(std::string_view name);

// The media type for the name's extension.
std::string_view mediaTypeOf(std::string_view name);

} // namespace pbhost::live
