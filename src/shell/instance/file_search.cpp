#include "shell/instance/file_search.h"

namespace {

constexpr int deepest = 2;

} // namespace

bool searchFile(const _JST::Folder<aeAllocator>& folder, const _JST::String<aeAllocator>& name,
                int depth, _JST::String<aeAllocator>& result) {
    const auto files = folder.listFiles();
    for (std::size_t i = 0; i < files.size(); ++i) {
        const _JST::File<aeAllocator> file(files[i]);
        if (file.exists() && file.name().text() == name.text()) {
            result = files[i];
            return true;
        }
    }
    if (depth >= deepest)
        return false;
    const auto folders = folder.listFolders();
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const _JST::Folder<aeAllocator> inner(folders[i]);
        if (inner.exists() && searchFile(inner, name, depth + 1, result))
            return true;
    }
    return false;
}
