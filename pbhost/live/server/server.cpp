#include "pbhost/live/server/server.h"

#include <unistd.h>

#include <array>
#include <boost/asio.hpp>
#include <boost/beast.hpp>
#include <chrono>
#include <deque>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "pbhost/files/printable.h"
#include "pbhost/live/child/render_child.h"
#include "pbhost/live/child/work.h"
#include "pbhost/live/server/file_watch.h"
#include "pbhost/live/server/gate.h"
#include "pbhost/live/server/page_files.h"
#include "pbhost/live/server/page_requests.h"
#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using tcp = asio::ip::tcp;
using Error = boost::system::error_code;
using HttpRequest = http::request<http::string_body>;
using HttpResponse = http::response<http::string_body>;

namespace {

constexpr std::size_t largestPageMessage = std::size_t{16} << 20;
constexpr std::chrono::seconds httpTimeout(60);

class Tab;

// What the connections share.
struct Hub {
    Hub(Workspace& shared, const SessionOptions& sessionOptions)
        : workspace(shared), options(sessionOptions), gate(makeToken(), shared.request.listen) {}

    void watchFiles();

    asio::io_context io{1};
    Workspace& workspace;
    const SessionOptions& options;
    const Gate gate;
    FileWatch watch;
    asio::posix::stream_descriptor watched{io, ::dup(watch.descriptor())};
    std::set<Tab*> tabs;
};

std::string textOf(const Data& json) {
    return json.dump(-1, ' ', false, Data::error_handler_t::replace);
}

// One tab of a browser: relays requests to its render process and replies to the page.
class Tab : public std::enable_shared_from_this<Tab> {
public:
    Tab(Hub& owner, tcp::socket socket)
        : hub_(owner), page_(std::move(socket)), requests_(owner.workspace), childSocket_(owner.io),
          timer_(owner.io) {}
    ~Tab() { hub_.tabs.erase(this); }
    Tab(const Tab&) = delete;
    Tab& operator=(const Tab&) = delete;

    void start(const HttpRequest& upgrade) {
        beast::get_lowest_layer(page_).expires_never();
        page_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
        page_.read_message_max(largestPageMessage);
        page_.async_accept(upgrade, [self = shared_from_this()](Error error) {
            if (error)
                return;
            self->hub_.tabs.insert(self.get());
            self->greet();
            self->readPage();
        });
    }

    // Tells the page if its file or one of the pictures was saved.
    void tellChanged(const std::set<std::string>& changed) {
        bool concerns = changed.contains(requests_.file());
        for (const auto& picture : hub_.workspace.pictures())
            concerns = concerns || changed.contains(picture["file"].get<std::string>());
        if (concerns)
            sendText({{"do", "changed"}});
    }

private:
    using Bytes = std::vector<std::byte>;
    struct Outgoing {
        bool isText;
        std::string text;
        Bytes bytes;
    };

    void greet() {
        const LiveRequest& request = hub_.workspace.request;
        watchFiles(); // also if they cannot be loaded
        sendText({{"do", "hello"},
                  {"file", request.file.empty() ? request.project : request.file},
                  {"pictures", hub_.workspace.pictures()},
                  {"clock", hub_.workspace.clock()}});
    }

    // The page.

    void readPage() {
        page_.async_read(incoming_, [self = shared_from_this()](Error error, std::size_t) {
            if (error)
                return self->close();
            const std::string text = beast::buffers_to_string(self->incoming_.data());
            self->incoming_.consume(self->incoming_.size());
            self->onPage(text);
            self->readPage();
        });
    }

    void close() {
        isClosed_ = true;
        timer_.cancel();
        endChild();
    }

    void onPage(const std::string& text) {
        Data request = Data::parse(text, nullptr, false);
        if (!request.is_object() || !request.value("do", Data()).is_string())
            return;
        try {
            sendToChild(requests_.complete(request));
        } catch (const std::exception& error) {
            sendText({{"do", "failed"},
                      {"what", request["do"]},
                      {"id", request.value("id", Data(0))},
                      {"text", error.what()},
                      {"places", Data::array()}});
        }
    }

    void sendText(const Data& json) { send({true, textOf(json), {}}); }

    void send(Outgoing message) {
        if (isClosed_)
            return;
        outgoing_.push_back(std::move(message));
        if (outgoing_.size() == 1)
            writePage();
    }

    void writePage() {
        const Outgoing& next = outgoing_.front();
        page_.text(next.isText);
        const asio::const_buffer buffer =
            next.isText ? asio::buffer(next.text) : asio::buffer(next.bytes);
        page_.async_write(buffer, [self = shared_from_this()](Error error, std::size_t) {
            if (error)
                return self->close();
            self->outgoing_.pop_front();
            if (!self->outgoing_.empty())
                self->writePage();
        });
    }

    // The render process.

    void startChild() {
        child_.emplace([options = hub_.options](int socket) { answerRequests(socket, options); });
        childSocket_ = asio::local::stream_protocol::socket(hub_.io);
        childSocket_.assign(asio::local::stream_protocol(), ::dup(child_->socket()));
        waiting_ = 0;
        ++generation_;
        toChild_.clear();
        readChild();
    }

    // Returns how it ended.
    std::string endChild() {
        if (!child_)
            return "";
        Error ignored;
        childSocket_.close(ignored);
        std::string how = child_->end();
        child_.reset();
        ++generation_;
        return how;
    }

    void sendToChild(const Data& request) {
        if (!child_)
            startChild();
        toChild_.push_back(framed({request, {}}));
        if (toChild_.size() == 1)
            writeChild();
        if (++waiting_ == 1)
            startTimer();
    }

    // A failed write shows in the read, too.
    void writeChild() {
        asio::async_write(childSocket_, asio::buffer(toChild_.front()),
                          [self = shared_from_this(), was = generation_](Error error, std::size_t) {
                              if (error || was != self->generation_)
                                  return;
                              self->toChild_.pop_front();
                              if (!self->toChild_.empty())
                                  self->writeChild();
                          });
    }

    void readChild() {
        asio::async_read(childSocket_, asio::buffer(&lengths_, sizeof lengths_),
                         [self = shared_from_this(), was = generation_](Error error, std::size_t) {
                             if (was != self->generation_)
                                 return;
                             if (error)
                                 return self->onChildEnd("");
                             self->readChildMessage();
                         });
    }

    void readChildMessage() {
        head_.resize(lengths_.head);
        body_.resize(lengths_.body);
        const std::array<asio::mutable_buffer, 2> parts = {asio::buffer(head_),
                                                           asio::buffer(body_)};
        asio::async_read(childSocket_, parts,
                         [self = shared_from_this(), was = generation_](Error error, std::size_t) {
                             if (was != self->generation_)
                                 return;
                             if (error)
                                 return self->onChildEnd("");
                             self->onChild();
                             self->readChild();
                         });
    }

    void onChild() {
        timer_.cancel();
        if (--waiting_ > 0)
            startTimer();
        Data reply = Data::parse(head_);
        const std::size_t picturesBefore = hub_.workspace.pictures().size();
        const bool isOfLoad = reply["do"] == "load" || reply.value("what", "") == "load";
        requests_.adapt(reply);
        if (isOfLoad) {
            watchFiles();
            sendText({{"do", "source"}, {"text", requests_.source()}});
        }
        if (hub_.workspace.pictures().size() != picturesBefore)
            sendText({{"do", "pictures"}, {"pictures", hub_.workspace.pictures()}});
        reply["bytes"] = body_.size();
        sendText(reply);
        if (!body_.empty())
            send({false, "", std::move(body_)});
        body_ = {};
    }

    void watchFiles() {
        if (!requests_.file().empty())
            hub_.watch.add(requests_.file());
        for (const auto& picture : hub_.workspace.pictures())
            hub_.watch.add(picture["file"]);
    }

    void startTimer() {
        timer_.expires_after(std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::duration<double>(hub_.workspace.request.timeout)));
        timer_.async_wait([self = shared_from_this(), was = generation_](Error error) {
            if (!error && was == self->generation_ && self->waiting_ > 0)
                self->onChildEnd(
                    "did not answer within the time limit (--timeout) and was stopped");
        });
    }

    void onChildEnd(const std::string& reason) {
        timer_.cancel();
        const std::string how = endChild();
        sendText({{"do", "ended"},
                  {"text", "The render process " + (reason.empty() ? how : reason) + "."}});
    }

    Hub& hub_;
    websocket::stream<beast::tcp_stream> page_;
    beast::flat_buffer incoming_;
    std::deque<Outgoing> outgoing_; // the first is being written
    bool isClosed_ = false;
    PageRequests requests_;

    std::optional<RenderChild> child_;
    asio::local::stream_protocol::socket childSocket_;
    std::deque<std::string> toChild_; // the first is being written
    unsigned generation_ = 0;         // counts starts and ends of render processes
    int waiting_ = 0;                 // requests without a reply
    asio::steady_timer timer_;
    Lengths lengths_;
    std::string head_;
    Bytes body_;
};

void Hub::watchFiles() {
    watched.async_wait(asio::posix::stream_descriptor::wait_read, [this](Error error) {
        if (error)
            return;
        // A save may be several events.
        auto pause = std::make_shared<asio::steady_timer>(io, std::chrono::milliseconds(8));
        pause->async_wait([this, pause](Error) {
            const auto changed = watch.takeChanged();
            for (Tab* tab : tabs)
                tab->tellChanged({changed.begin(), changed.end()});
            watchFiles();
        });
    });
}

constexpr const char* contentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

HttpResponse responseOf(const HttpRequest& request, unsigned status, std::string_view type,
                        std::string_view content) {
    HttpResponse response(static_cast<http::status>(status), request.version());
    response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
    response.set(http::field::cache_control, "no-store");
    response.set("Content-Security-Policy", contentPolicy);
    response.set("X-Content-Type-Options", "nosniff");
    response.set("Referrer-Policy", "no-referrer");
    response.set("Cross-Origin-Resource-Policy", "same-origin");
    response.set("Cross-Origin-Opener-Policy", "same-origin");
    response.body() = content;
    response.keep_alive(status < 400 && request.keep_alive());
    response.prepare_payload();
    return response;
}

// The text with "%41" and the like replaced by the bytes.
std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

// One connection: answers its requests until it is closed or becomes a tab's WebSocket.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(Hub& owner, tcp::socket socket) : hub_(owner), stream_(std::move(socket)) {}

    void read() {
        parser_.emplace();
        parser_->body_limit(largestDrop);
        stream_.expires_after(httpTimeout);
        http::async_read_header(
            stream_, buffer_, *parser_,
            [self = shared_from_this()](Error error, std::size_t) { self->onHead(error); });
    }

private:
    RequestHead head() const {
        const auto view = [](beast::string_view text) {
            return std::string_view(text.data(), text.size());
        };
        const HttpRequest& request = parser_->get();
        return {view(request.method_string()), view(request.target()),
                view(request[http::field::host]), view(request[http::field::origin]),
                websocket::is_upgrade(request)};
    }

    void onHead(Error error) {
        if (error == http::error::body_limit)
            return answer(413, "text/plain", "The file is larger than 64 MiB.");
        if (error)
            return;
        // Before the body is read.
        if (const auto refusal = hub_.gate.refusal(head()))
            return answer(refusal->status, "text/plain", refusal->reason);
        if (head().isWebSocket)
            return becomeTab();
        http::async_read(
            stream_, buffer_, *parser_, [self = shared_from_this()](Error readError, std::size_t) {
                if (readError == http::error::body_limit)
                    return self->answer(413, "text/plain", "The file is larger than 64 MiB.");
                if (!readError)
                    self->onRequest();
            });
    }

    void becomeTab() {
        if (hub_.gate.pathOf(head().target) != "socket")
            return answer(404, "text/plain", "There is no such address.");
        std::make_shared<Tab>(hub_, stream_.release_socket())->start(parser_->get());
    }

    void onRequest() {
        const std::string_view path = hub_.gate.pathOf(head().target);
        try {
            if (head().method == "POST")
                return path == "pictures" ? addPicture() : notFound();
            if (path.starts_with("saved/"))
                return download(path.substr(6));
            const PageFile* file = findPageFile(path.empty() ? "index.html" : path);
            if (file == nullptr)
                return notFound();
            answer(200, mediaTypeOf(file->name), file->content);
        } catch (const std::exception& failure) {
            answer(400, "text/plain", failure.what());
        }
    }

    void notFound() { answer(404, "text/plain", "There is no such address."); }

    void addPicture() {
        const std::string_view target = head().target;
        const std::size_t name = target.find("?name=");
        if (name == std::string_view::npos)
            return answer(400, "text/plain", "The name is missing.");
        const std::size_t id =
            hub_.workspace.addDrop(decoded(target.substr(name + 6)), parser_->get().body());
        answer(200, "application/json",
               textOf({{"id", id}, {"pictures", hub_.workspace.pictures()}}));
    }

    void download(std::string_view name) {
        const std::string content = hub_.workspace.takeFile(name);
        if (content.empty())
            return notFound();
        answer(200, "application/octet-stream", content);
    }

    void answer(unsigned status, std::string_view type, std::string_view content) {
        response_ = responseOf(parser_->get(), status, type, content);
        http::async_write(stream_, response_,
                          [self = shared_from_this()](Error error, std::size_t) {
                              if (error)
                                  return;
                              if (self->response_.keep_alive())
                                  return self->read();
                              Error ignored;
                              self->stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
                          });
    }

    Hub& hub_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
    std::optional<http::request_parser<http::string_body>> parser_;
    HttpResponse response_;
};

void accept(Hub& hub, tcp::acceptor& acceptor) {
    acceptor.async_accept([&](Error error, tcp::socket socket) {
        if (!error) {
            socket.set_option(tcp::no_delay(true), error);
            std::make_shared<Connection>(hub, std::move(socket))->read();
        }
        accept(hub, acceptor);
    });
}

tcp::acceptor listenAt(Hub& hub) {
    const LiveRequest& request = hub.workspace.request;
    const auto fail = [&](const std::string& why) {
        throw Failure(ExitCode::Usage, "cannot listen at " + request.listen + ", port " +
                                           std::to_string(request.port) + ": " + why);
    };
    Error error;
    const asio::ip::address address = asio::ip::make_address(request.listen, error);
    if (error)
        fail("write an IP address");
    try {
        return {hub.io, {address, static_cast<unsigned short>(request.port)}};
    } catch (const boost::system::system_error& cause) {
        fail(cause.code().message());
        throw;
    }
}

std::string hostOf(const tcp::endpoint& endpoint) {
    if (endpoint.address().is_unspecified())
        return "127.0.0.1";
    const std::string text = endpoint.address().to_string();
    return endpoint.address().is_v6() ? "[" + text + "]" : text;
}

} // namespace

void serve(Workspace& workspace, const SessionOptions& options,
           const std::function<void(const std::string& url)>& onReady) {
    Hub hub(workspace, options);
    tcp::acceptor acceptor = listenAt(hub);
    accept(hub, acceptor);
    hub.watchFiles();
    onReady("http://" + hostOf(acceptor.local_endpoint()) + ":" +
            std::to_string(acceptor.local_endpoint().port()) + "/" + hub.gate.token() + "/");
    // A fault in one tab must not end the others.
    while (true)
        try {
            hub.io.run();
            return;
        } catch (const std::exception& error) {
            std::cerr << "pbhost: " << printable(error.what()) << "\n";
        }
}

} // namespace pbhost::live
