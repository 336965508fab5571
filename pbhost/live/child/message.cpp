#include "pbhost/live/child/message.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace pbhost::live {

namespace {

bool readAll(int socket, void* target, std::size_t count) {
    auto* at = static_cast<char*>(target);
    while (count > 0) {
        const ssize_t got = ::read(socket, at, count);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        at += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

bool writeAll(int socket, const void* source, std::size_t count) {
    const auto* at = static_cast<const char*>(source);
    while (count > 0) {
        const ssize_t sent = ::send(socket, at, count, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return false;
        at += sent;
        count -= static_cast<std::size_t>(sent);
    }
    return true;
}

} // namespace

std::string framed(const Message& message) {
    const std::string head = message.head.dump(-1, ' ', false, Data::error_handler_t::replace);
    const Lengths lengths = {static_cast<std::uint32_t>(head.size()),
                             static_cast<std::uint32_t>(message.body.size())};
    std::string bytes(sizeof lengths, '\0');
    std::memcpy(bytes.data(), &lengths, sizeof lengths);
    return bytes + head;
}

bool readMessage(int socket, Message& message) {
    Lengths lengths;
    if (!readAll(socket, &lengths, sizeof lengths))
        return false;
    std::string head(lengths.head, '\0');
    message.body.resize(lengths.body);
    if (!readAll(socket, head.data(), head.size()) ||
        !readAll(socket, message.body.data(), message.body.size()))
        return false;
    message.head = Data::parse(head);
    return true;
}

bool writeMessage(int socket, const Message& message) {
    const std::string head = framed(message);
    return writeAll(socket, head.data(), head.size()) &&
           writeAll(socket, message.body.data(), message.body.size());
}

} // namespace pbhost::live
