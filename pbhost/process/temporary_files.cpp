#include "pbhost/process/temporary_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>

#include "hostkit/services/complete_file.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

constexpr const char* commonPrefix = ".pbhost-";

std::string prefixOf(pid_t process) {
    return commonPrefix + std::to_string(process) + "-";
}

// Random, so that other users cannot create a file with this name first.
std::string randomDigits() {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), std::random_device()(), 16);
    return {digits.data(), end.ptr};
}

std::error_code lastError() {
    return {errno, std::generic_category()};
}

// Calls work(path) for what the folder contains with names that start with the prefix.
template<class Work>
void forEachWith(const std::string& prefix, const fs::path& folder, const Work& work) {
    std::error_code ignored;
    for (fs::directory_iterator entry(folder, ignored), end; entry != end; entry.increment(ignored))
        if (entry->path().filename().string().starts_with(prefix))
            work(entry->path());
}

const char* kindName(fs::file_type type) {
    return type == fs::file_type::character || type == fs::file_type::block ? "a device"
           : type == fs::file_type::fifo                                    ? "a pipe"
           : type == fs::file_type::socket                                  ? "a socket"
                                                                            : "something else";
}

// Whether the path leads to /proc, as /dev/stdout does: an open file of a process.
bool isOpenFile(fs::path path) {
    constexpr int mostLinks = 40; // the system's limit
    std::error_code ignored;
    for (int i = 0; i < mostLinks; ++i) {
        const fs::path folder = fs::weakly_canonical(folderOf(path), ignored);
        if (folder.string().starts_with("/proc/"))
            return true;
        if (!fs::is_symlink(path, ignored))
            return false;
        path = folder / fs::read_symlink(path, ignored);
    }
    return false;
}

} // namespace

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

fs::path resolveLink(const fs::path& path) {
    std::error_code ignored;
    return fs::is_symlink(path, ignored) ? fs::weakly_canonical(path, ignored) : path;
}

std::string obstacleToWriting(const fs::path& target) {
    std::error_code ignored;
    const fs::file_status status = fs::status(target, ignored);
    if (isOpenFile(target))
        return "it is an open file of a process";
    if (fs::is_directory(status))
        return "it is a folder";
    if (fs::exists(status) && !fs::is_regular_file(status))
        return std::string("it is ") + kindName(status.type()) + ", not a regular file";
    if (fs::is_symlink(target, ignored) && !fs::exists(status))
        return "it is a link without a target";
    const fs::path folder = folderOf(resolveLink(target));
    if (!fs::is_directory(folder, ignored))
        return "there is no folder '" + folder.string() + "'";
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "no permission to write into '" + folder.string() + "'";
    if (const std::error_code error = TemporaryFile(target).create())
        return "no file can be created in '" + folder.string() + "': " + error.message();
    return "";
}

TemporaryFile::TemporaryFile(const fs::path& target)
    : path(folderOf(resolveLink(target)) /
           (prefixOf(::getpid()) + randomDigits() + target.extension().string())),
      target_(resolveLink(target)) {}

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

std::error_code TemporaryFile::replaceTarget() const {
    return hostkit::replaceFile(path, target_);
}

void writeTextFile(const fs::path& target, const std::string& text) {
    const TemporaryFile temporary(target);
    std::error_code error = temporary.create();
    if (!error)
        error = hostkit::writeFile(temporary.path, text);
    if (!error)
        error = temporary.replaceTarget();
    if (error)
        throw Failure(ExitCode::RenderFailed,
                      "cannot write '" + target.string() + "': " + error.message());
}

TemporaryFolder::TemporaryFolder()
    : path((fs::temp_directory_path() / (prefixOf(::getpid()) + "XXXXXX")).string()) {
    if (::mkdtemp(path.data()) == nullptr)
        throw Failure(ExitCode::RenderFailed,
                      path + ": cannot create a temporary folder: " + std::strerror(errno));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

void removeAbandonedTemporaries(const fs::path& folder) {
    const auto yesterday = fs::file_time_type::clock::now() - std::chrono::hours(24);
    forEachWith(commonPrefix, folder, [&](const fs::path& path) {
        std::error_code error;
        const auto written = fs::last_write_time(path, error);
        if (!error && written < yesterday)
            fs::remove(path, error);
    });
}

void removeTemporaries(const std::vector<fs::path>& folders, pid_t process) {
    std::error_code ignored;
    const auto remove = [&](const fs::path& path) { fs::remove_all(path, ignored); };
    forEachWith(prefixOf(process), fs::temp_directory_path(ignored), remove);
    for (const fs::path& folder : folders)
        forEachWith(prefixOf(process), folder, remove);
}

} // namespace pbhost
