#include "pbhost/lsp/json_rpc.h"

#include <charconv>

#include "pbhost/process/channel.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

constexpr std::string_view headerEnd = "\r\n\r\n";
constexpr std::size_t longestHeader = 4096;
constexpr std::size_t longestBody = 64 << 20;

std::size_t bodyLength(std::string_view header) {
    constexpr std::string_view field = "Content-Length:";
    const std::size_t at = header.find(field);
    std::size_t length = 0;
    if (at != std::string_view::npos) {
        header.remove_prefix(at + field.size());
        header.remove_prefix(std::min(header.find_first_not_of(' '), header.size()));
        const char* end = header.data() + header.size();
        if (std::from_chars(header.data(), end, length).ec == std::errc() && length <= longestBody)
            return length;
    }
    throw Failure(ExitCode::Usage, "the input is not that of a language client: a header has no "
                                   "valid Content-Length");
}

} // namespace

bool JsonRpc::read() {
    return readSome(input_, buffer_);
}

std::optional<Json> JsonRpc::next() {
    for (;;) {
        const std::size_t end = buffer_.find(headerEnd);
        if (end == std::string::npos) {
            if (buffer_.size() > longestHeader)
                bodyLength("");
            return std::nullopt;
        }
        const std::size_t start = end + headerEnd.size();
        const std::size_t length = bodyLength(std::string_view(buffer_).substr(0, end));
        if (buffer_.size() - start < length)
            return std::nullopt;
        Json message = Json::parse(buffer_.begin() + static_cast<std::ptrdiff_t>(start),
                                   buffer_.begin() + static_cast<std::ptrdiff_t>(start + length),
                                   nullptr, false);
        buffer_.erase(0, start + length);
        if (message.is_object())
            return message;
        fail(nullptr, message.is_discarded() ? parseError : invalidRequest,
             "the message is not a JSON object");
    }
}

void JsonRpc::send(Json message) {
    message["jsonrpc"] = "2.0";
    const std::string body = message.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string text = "Content-Length: " + std::to_string(body.size());
    text.append(headerEnd).append(body);
    if (!writeAll(output_, text.data(), text.size()))
        throw Failure(ExitCode::RenderFailed, "standard output could not be written");
}

void JsonRpc::notify(const std::string& method, const Json& parameters) {
    send({{"method", method}, {"params", parameters}});
}

void JsonRpc::respond(const Json& id, const Json& result) {
    send({{"id", id}, {"result", result}});
}

void JsonRpc::fail(const Json& id, int code, const std::string& message) {
    send({{"id", id}, {"error", {{"code", code}, {"message", message}}}});
}

} // namespace pbhost
