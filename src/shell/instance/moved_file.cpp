#include "shell/instance/moved_file.h"

#include "host/persistent_data.h"
#include "support/files.h"

namespace {

constexpr int deepest = 2;

// Finds the first file of exactly that name in the folder or up to two levels of folders below: the
// files of a folder are searched before its folders, both in the order of the system's listing.
// Pass 0 for `depth`, the level of the folder. Returns true, with the path in `result`, if there is
// one.
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

} // namespace

void findMovedFile(const PF_InData& inData, SequenceData& sequence) {
    using File = _JST::File<aeAllocator>;
    const File file{_JST::String<aeAllocator>(sequence.filePath)};
    if (file.exists())
        return;
    AEO::PersistentData preferences(inData.pica_basicP);
    const NarrowString root = preferences.getString("Settings_cs_TVM_Launcher", "rootFolder");
    const _JST::Folder<aeAllocator> folder{_JST::String<aeAllocator>(root.c_str())};
    _JST::String<aeAllocator> found;
    if (folder.exists() && searchFile(folder, file.name(), 0, found))
        sequence.setPath(found.text());
}
