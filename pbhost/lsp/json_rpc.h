// Messages of JSON-RPC over two descriptors, each behind a header with its length.
#pragma once

#include <optional>
#include <string>

#include "pbhost/files/json_text.h"

namespace pbhost {

class JsonRpc {
public:
    // The descriptors are not owned.
    JsonRpc(int input, int output) : input_(input), output_(output) {}

    int input() const { return input_; }

    // Reads what has arrived; false at the end of the input.
    bool read();

    // The next whole message; nothing if there is none yet. Throws Failure for a malformed header,
    // behind which nothing can be read. A body that is not JSON is answered here.
    std::optional<Json> next();

    void notify(const std::string& method, const Json& parameters);
    void respond(const Json& id, const Json& result);
    void fail(const Json& id, int code, const std::string& message);

    static constexpr int parseError = -32700;
    static constexpr int invalidRequest = -32600;
    static constexpr int methodNotFound = -32601;
    static constexpr int invalidParameters = -32602;
    static constexpr int notInitialized = -32002;

private:
    void send(Json message);

    int input_, output_;
    std::string buffer_;
};

} // namespace pbhost
