#include "pbhost/temporary_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>

#include "pbhost/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

std::string prefixOf(pid_t process) {
    return ".pbhost-" + std::to_string(process) + "-";
}

// So that nobody can put a file of his own in the way.
std::string randomDigits() {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::random_device()(), 16);
    return {digits.data(), end.ptr};
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

// The stream itself does not tell a reason.
std::error_code writeInto(const fs::path& path, const std::string& text) {
    errno = EIO;
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return file ? std::error_code() : lastError();
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

fs::path placeOf(const fs::path& path) {
    std::error_code ignored;
    return fs::is_symlink(path, ignored) ? fs::weakly_canonical(path, ignored) : path;
}

std::string obstacleAt(const fs::path& target) {
    const fs::path folder = folderOf(placeOf(target));
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored))
        return "there is no folder '" + folder.string() + "'";
    if (fs::is_directory(target, ignored))
        return "it is a folder";
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "no permission to write into '" + folder.string() + "'";
    return "";
}

TemporaryFile::TemporaryFile(const fs::path& target)
    : path(folderOf(placeOf(target)) /
           (prefixOf(::getpid()) + randomDigits() + target.extension().string())),
      place_(placeOf(target)) {}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    fs::remove(path, ignored);
}

std::error_code TemporaryFile::create() const {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        return lastError();
    ::close(file);
    return {};
}

std::error_code TemporaryFile::moveToPlace() const {
    std::error_code error;
    const fs::file_status old = fs::status(place_, error);
    error.clear(); // it need not be there
    if (fs::is_regular_file(old))
        fs::permissions(path, old.permissions() & fs::perms::all, error);
    if (!error)
        fs::rename(path, place_, error);
    return error;
}

void writeTextFile(const fs::path& target, const std::string& text) {
    const TemporaryFile temporary(target);
    std::error_code error = temporary.create();
    if (!error)
        error = writeInto(temporary.path, text);
    if (!error)
        error = temporary.moveToPlace();
    if (error)
        throw Failure(ExitCode::RenderFailed,
                      "cannot write '" + target.string() + "': " + error.message());
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
