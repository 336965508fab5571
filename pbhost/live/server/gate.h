// Decides which requests the server answers: only those of its own page, opened by someone who has
// the address with the token.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pbhost::live {

// The parts of an HTTP request that decide.
struct RequestHead {
    std::string_view method;
    std::string_view target; // begins with /TOKEN/
    std::string_view host;   // the header's values; empty: none
    std::string_view origin;
    bool isWebSocket = false;
};

struct Refusal {
    unsigned status;
    std::string reason;
};

class Gate {
public:
    // `listen` is the address that the server is bound to.
    Gate(std::string token, std::string listen);

    // Refuses a host that a name server could have pointed at this machine, a wrong token, another
    // origin, and a WebSocket or a POST without an origin. Nothing: the request is allowed.
    std::optional<Refusal> refusal(const RequestHead& head) const;

    // The target behind the token, without a query; the request must be allowed.
    std::string_view pathOf(std::string_view target) const;

    const std::string& token() const { return token_; }

private:
    bool isOwnHost(std::string_view host) const;
    bool hasToken(std::string_view target) const;

    const std::string token_;
    const std::string listen_;
};

// A random token of 128 bits. Throws Failure (RenderFailed).
std::string makeToken();

} // namespace pbhost::live
