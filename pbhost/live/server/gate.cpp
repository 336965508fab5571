#include "pbhost/live/server/gate.h"

#include <arpa/inet.h>
#include <sys/random.h>

#include <array>
#include <utility>

#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace {

// The host without the port.
std::string_view nameOf(std::string_view host) {
    if (host.starts_with('['))
        return host.substr(0, host.find(']') + 1);
    return host.substr(0, host.find(':'));
}

bool isAddress(const std::string& name) {
    std::array<unsigned char, sizeof(in6_addr)> address{};
    const bool isBracketed = name.starts_with('[') && name.ends_with(']');
    return inet_pton(AF_INET, name.c_str(), address.data()) == 1 ||
           (isBracketed &&
            inet_pton(AF_INET6, name.substr(1, name.size() - 2).c_str(), address.data()) == 1);
}

} // namespace

Gate::Gate(std::string token, std::string listen)
    : token_(std::move(token)), listen_(std::move(listen)) {}

// Any port is accepted, because a tunnel can have another one.
bool Gate::isOwnHost(std::string_view host) const {
    const std::string name(nameOf(host));
    if (name == "localhost" || name == "127.0.0.1" || name == "[::1]")
        return true;
    const bool isLocalOnly = listen_ == "127.0.0.1" || listen_ == "::1";
    // A name server cannot change what an address means.
    return !isLocalOnly && (name == listen_ || isAddress(name));
}

// Compares all characters, so that the time does not tell how many are right.
bool Gate::hasToken(std::string_view target) const {
    if (target.size() < token_.size() + 2 || target[0] != '/' || target[token_.size() + 1] != '/')
        return false;
    unsigned difference = 0;
    for (std::size_t i = 0; i < token_.size(); ++i)
        difference |= static_cast<unsigned char>(target[i + 1] ^ token_[i]);
    return difference == 0;
}

std::optional<Refusal> Gate::refusal(const RequestHead& head) const {
    if (!isOwnHost(head.host))
        return Refusal{403, "This server has another name."};
    if (!hasToken(head.target))
        return Refusal{403, "The address is not complete: open the one that pbhost printed."};
    const bool acts = head.isWebSocket || head.method != "GET";
    const bool hasOwnOrigin = head.origin == "http://" + std::string(head.host);
    if (!hasOwnOrigin && (acts || !head.origin.empty()))
        return Refusal{403, "Only the server's own page may do this."};
    if (head.method != "GET" && head.method != "POST")
        return Refusal{405, "Only GET and POST are known."};
    return std::nullopt;
}

std::string_view Gate::pathOf(std::string_view target) const {
    target.remove_prefix(token_.size() + 2);
    return target.substr(0, target.find('?'));
}

std::string makeToken() {
    std::array<unsigned char, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        throw Failure(ExitCode::RenderFailed, "the system gives no random numbers");
    constexpr char digits[] = "0123456789abcdef";
    std::string token;
    for (const unsigned char byte : bytes) {
        token += digits[byte >> 4];
        token += digits[byte & 15];
    }
    return token;
}

} // namespace pbhost::live
