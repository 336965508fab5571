#include "pbhost/process/channel.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace pbhost {

namespace {

// Repeats a transfer of part of the remaining bytes, which returns their count as read(2) does.
template<typename Transfer>
bool transferAll(std::size_t count, Transfer transfer) {
    for (std::size_t done = 0; done < count;) {
        const ssize_t part = transfer(done, count - done);
        if (part < 0 && errno == EINTR)
            continue;
        if (part <= 0)
            return false;
        done += static_cast<std::size_t>(part);
    }
    return true;
}

} // namespace

bool readSome(int descriptor, std::string& text) {
    std::array<char, 1 << 16> part;
    ssize_t count = 0;
    do
        count = ::read(descriptor, part.data(), part.size());
    while (count < 0 && errno == EINTR);
    if (count > 0)
        text.append(part.data(), static_cast<std::size_t>(count));
    return count > 0;
}

bool readAll(int descriptor, void* target, std::size_t count) {
    return transferAll(count, [&](std::size_t done, std::size_t rest) {
        return ::read(descriptor, static_cast<char*>(target) + done, rest);
    });
}

bool writeAll(int descriptor, const void* source, std::size_t count) {
    return transferAll(count, [&](std::size_t done, std::size_t rest) {
        return ::write(descriptor, static_cast<const char*>(source) + done, rest);
    });
}

bool sendAll(int socket, const void* source, std::size_t count) {
    return transferAll(count, [&](std::size_t done, std::size_t rest) {
        return ::send(socket, static_cast<const char*>(source) + done, rest, MSG_NOSIGNAL);
    });
}

} // namespace pbhost
