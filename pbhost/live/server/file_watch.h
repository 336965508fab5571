// Reports when a file is saved. It watches the file's folder, because editors replace files by
// renaming.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace pbhost::live {

class FileWatch {
public:
    FileWatch(); // throws Failure (RenderFailed)
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    // Watches the file, and the target if it is a link. A folder that does not exist is ignored.
    void add(const std::string& file);

    // The watched files that were written since the last call, as given to `add`. Does not block.
    std::vector<std::string> takeChanged();

    int descriptor() const { return descriptor_; } // readable when a file may have changed

private:
    void addPlace(const std::string& place, const std::string& file);

    int descriptor_;
    std::map<int, std::string> folders_;                 // by the watch's number
    std::map<std::string, std::set<std::string>> files_; // by the path of the place
};

} // namespace pbhost::live
