#include "pbhost/live/server/file_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace fs = std::filesystem;

FileWatch::FileWatch() : descriptor_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (descriptor_ < 0)
        throw Failure(ExitCode::RenderFailed,
                      std::string("cannot watch files: ") + std::strerror(errno));
}

FileWatch::~FileWatch() {
    ::close(descriptor_);
}

void FileWatch::addPlace(const std::string& place, const std::string& file) {
    const std::string folder = fs::path(place).parent_path().string();
    const int watch =
        inotify_add_watch(descriptor_, folder.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR);
    if (watch < 0)
        return;
    folders_[watch] = folder;
    files_[place].insert(file);
}

void FileWatch::add(const std::string& file) {
    std::error_code ignored;
    const std::string absolute = fs::absolute(file, ignored).lexically_normal().string();
    const std::string target = fs::weakly_canonical(absolute, ignored).string();
    addPlace(absolute, file);
    if (!target.empty() && target != absolute)
        addPlace(target, file);
}

std::vector<std::string> FileWatch::takeChanged() {
    std::set<std::string> changed;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (ssize_t size = 0; (size = ::read(descriptor_, buffer.data(), buffer.size())) > 0;)
        for (const char* at = buffer.data(); at < buffer.data() + size;) {
            inotify_event event;
            std::memcpy(&event, at, sizeof event);
            const char* name = at + sizeof event;
            const auto found = files_.find(folders_[event.wd] + "/" + (event.len > 0 ? name : ""));
            if (found != files_.end())
                changed.insert(found->second.begin(), found->second.end());
            at += sizeof event + event.len;
        }
    return {changed.begin(), changed.end()};
}

} // namespace pbhost::live
