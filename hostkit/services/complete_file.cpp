#include "hostkit/services/complete_file.h"

#include <cerrno>
#include <fstream>

namespace hostkit {

namespace fs = std::filesystem;

// std::ofstream reports no reason for a failure, so errno is used.
std::error_code writeFile(const fs::path& file, const std::string& text) {
    errno = EIO;
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    return stream ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::error_code replaceFile(const fs::path& file, const fs::path& target) {
    std::error_code error;
    const fs::file_status old = fs::status(target, error);
    error.clear(); // the target need not exist
    if (fs::is_regular_file(old))
        fs::permissions(file, old.permissions() & fs::perms::all, error);
    if (!error)
        fs::rename(file, target, error);
    return error;
}

} // namespace hostkit
