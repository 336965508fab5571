#include "pbhost/temporary_files.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "pbhost/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

std::string prefixOf(pid_t process) {
    return ".pbhost-" + std::to_string(process) + "-";
}

void removeFrom(const fs::path& folder, const std::string& prefix) {
    std::error_code ignored;
    for (fs::directory_iterator entry(folder, ignored), end; entry != end;
         entry.increment(ignored)) {
        if (entry->path().filename().string().starts_with(prefix))
            fs::remove_all(entry->path(), ignored);
    }
}

} // namespace

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

TemporaryFile::TemporaryFile(const fs::path& target) {
    static std::atomic<unsigned> counter = 0;
    path = folderOf(target) /
           (prefixOf(::getpid()) + std::to_string(counter++) + target.extension().string());
}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    fs::remove(path, ignored);
}

void writeTextFile(const fs::path& target, const std::string& text) {
    const TemporaryFile temporary(target);
    errno = 0;
    std::ofstream file(temporary.path, std::ios::binary);
    file << text;
    file.close();
    std::error_code error;
    if (file)
        fs::rename(temporary.path, target, error);
    if (!file || error)
        throw Failure(ExitCode::RenderFailed, "cannot write '" + target.string() + "': " +
                                                  (error ? error.message() : std::strerror(errno)));
}

TemporaryFolder::TemporaryFolder()
    : path((fs::temp_directory_path() / (prefixOf(::getpid()) + "XXXXXX")).string()) {
    if (::mkdtemp(path.data()) == nullptr)
        throw Failure(ExitCode::RenderFailed,
                      path + ": no temporary folder can be made: " + std::strerror(errno));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

void removeTemporaries(const std::vector<fs::path>& folders, pid_t process) {
    std::error_code ignored;
    removeFrom(fs::temp_directory_path(ignored), prefixOf(process));
    for (const fs::path& folder : folders)
        removeFrom(folder, prefixOf(process));
}

} // namespace pbhost
