// Messages between the server of `live` and a render process: a JSON object and, for pictures,
// bytes.
//
// On the socket a message is two 32-bit lengths in the machine's byte order, the JSON text, and the
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace pbhost::live {

// Unlike the Json of the text commands, with numbers of double precision.
using Data = nlohmann::ordered_json;

struct Message {
    Data head = Data::object();
    std::vector<std::byte> body;
};

// The lengths of a message's parts, as they precede it.
struct Lengths {
    std::uint32_t head = 0;
    std::uint32_t body = 0;
};

// The message without its body, ready to send.
std::string framed(const Message& message);

// Both block and return false when the other side has closed the socket.
bool readMessage(int socket, Message& message);
bool writeMessage(int socket, const Message& message);

} // namespace pbhost::live
