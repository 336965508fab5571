// Reads and writes descriptors of pipes and sockets until all is done, also across signals. All
// return false at the end of the channel or after an error; errno tells which.
#pragma once

#include <cstddef>
#include <string>

namespace pbhost {

// Appends what has arrived, waiting for at least one byte.
bool readSome(int descriptor, std::string& text);

// Reads exactly that many bytes.
bool readAll(int descriptor, void* target, std::size_t count);

// Raises SIGPIPE, unless it is ignored, if the other end is closed.
bool writeAll(int descriptor, const void* source, std::size_t count);

// The same for a socket, without SIGPIPE.
bool sendAll(int socket, const void* source, std::size_t count);

} // namespace pbhost
