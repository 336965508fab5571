#include "pbhost/session/places.h"

#include <cstdlib>

#include "pbhost/process/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

fs::path programFolder() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored).parent_path();
}

} // namespace

fs::path findModule(const std::string& option) {
    const std::string named = option.empty() ? environment("TVELMARONDINE_MODULE") : option;
    std::error_code ignored;
    const fs::path own = programFolder();
    // Beside the program or one folder above in a build, in lib when installed.
    for (const fs::path& path :
         {fs::path(named), own / "Tvelmarondine.so", own.parent_path() / "Tvelmarondine.so",
          own.parent_path() / "lib/tvelmarondine/Tvelmarondine.so"}) {
        if (!path.empty() && fs::is_regular_file(path, ignored))
            return path;
        if (!path.empty() && path == named)
            throw Failure(ExitCode::Usage, named + ": there is no such module");
    }
    throw Failure(ExitCode::Usage, "Tvelmarondine.so is neither beside the program, nor one "
                                   "folder above, nor in ../lib/tvelmarondine; give its path with "
                                   "--module FILE");
}

// Other programs of the build, such as tests, find it in the folder pbhost beside theirs.
fs::path findPictureLibrary() {
    const fs::path name = "libpbhost_pictures.so", own = programFolder();
    std::error_code ignored;
    for (const fs::path& path : {own / name, own.parent_path() / "pbhost" / name,
                                 own.parent_path() / "lib/tvelmarondine" / name})
        if (fs::is_regular_file(path, ignored))
            return path;
    throw Failure(ExitCode::RenderFailed,
                  (own / name).string() + ": the picture library is missing");
}

fs::path preferencesFile(const std::string& option) {
    std::error_code ignored;
    if (fs::is_directory(option, ignored))
        throw Failure(ExitCode::Usage, option + ": cannot hold preferences: it is a folder");
    if (!option.empty())
        return option;
    const fs::path configured = environment("XDG_CONFIG_HOME");
    const fs::path home = environment("HOME");
    if (!configured.is_absolute() && home.empty())
        return {};
    return (configured.is_absolute() ? configured : home / ".config") / "tvelmarondine" /
           "preferences.json";
}

} // namespace pbhost
