#include "pbhost/files/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace pbhost {

namespace {

class Descriptor {
public:
    explicit Descriptor(const std::string& path)
        : number(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number >= 0)
            ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

[[noreturn]] void fail(const char* reason) {
    throw std::runtime_error(reason);
}

// A file that another process is writing, or on a failing disk, may return fewer bytes than its
// size.
std::string readAll(int descriptor, std::size_t size) {
    std::string text;
    std::array<char, 1 << 16> part;
    for (ssize_t count = 1; count != 0;) {
        count = ::read(descriptor, part.data(), part.size());
        if (count < 0 && errno != EINTR)
            fail(std::strerror(errno));
        if (count > 0)
            text.append(part.data(), static_cast<std::size_t>(count));
    }
    if (text.size() < size)
        throw std::runtime_error("only " + std::to_string(text.size()) + " of its " +
                                 std::to_string(size) + " bytes could be read");
    return text;
}

} // namespace

std::string readWholeFile(const std::string& path, ExitCode code) {
    return orFail(code, path + ": cannot be read: ", [&] {
        const Descriptor file(path);
        struct stat status {};
        if (file.number < 0 || ::fstat(file.number, &status) != 0)
            fail(std::strerror(errno));
        if (S_ISDIR(status.st_mode))
            fail("it is a folder");
        return readAll(file.number, static_cast<std::size_t>(status.st_size));
    });
}

} // namespace pbhost
