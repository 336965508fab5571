#include "hostkit/services/complete_file.h"

#include <cerrno>
#include <fstream>

namespace hostkit {

namespace fs = std::filesystem;

// The stream itself does not tell a reason.
std::error_code writeWhole(const fs::path& file, const std::string& text) {
    errno = EIO;
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    return stream ? std::error_code() : std::error_code(errno, std::generic_category());
}

std::error_code moveToPlace(const fs::path& file, const fs::path& place) {
    std::error_code error;
    const fs::file_status old = fs::status(place, error);
    error.clear(); // it need not be there
    if (fs::is_regular_file(old))
        fs::permissions(file, old.permissions() & fs::perms::all, error);
    if (!error)
        fs::rename(file, place, error);
    return error;
}

} // namespace hostkit
