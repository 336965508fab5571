#include "pbhost/live/server/page_files.h"

#include <algorithm>
#include <array>
#include <utility>

namespace pbhost::live {

const PageFile* findPageFile(std::string_view name) {
    const auto files = pageFiles();
    const auto found = std::ranges::find(files, name, &PageFile::name);
    return found == files.end() ? nullptr : &*found;
}

std::string_view mediaTypeOf(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> types = {{
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
    }};
    for (const auto& [extension, type] : types)
        if (name.ends_with(extension))
            return type;
    return "application/octet-stream";
}

} // namespace pbhost::live
