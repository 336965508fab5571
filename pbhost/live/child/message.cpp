#include "pbhost/live/child/message.h"

#include <cstring>

#include "pbhost/process/channel.h"

namespace pbhost::live {

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
    return sendAll(socket, head.data(), head.size()) &&
           sendAll(socket, message.body.data(), message.body.size());
}

} // namespace pbhost::live
