#include "pbhost/lsp/server.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>

#include "pbhost/check/check_worker.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/lsp/features.h"
#include "pbhost/lsp/json_rpc.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

using Clock = CheckWorker::Clock;
using namespace std::chrono_literals;

constexpr auto pauseInTyping = 150ms;

struct OpenDocument : LspDocument {
    std::int64_t version = 0;
    std::optional<Clock::time_point> due; // when it is to be checked; nothing: it has been
};

// The path of a URI of the scheme "file"; the URI itself for any other.
std::string pathOf(const std::string& uri) {
    constexpr std::string_view scheme = "file://";
    if (!uri.starts_with(scheme))
        return uri;
    std::string path;
    for (std::size_t i = scheme.size(); i < uri.size(); ++i) {
        const std::string digits = uri.substr(i, 3);
        const bool isCode = digits.size() == 3 && digits[0] == '%' && std::isxdigit(digits[1]) &&
                            std::isxdigit(digits[2]);
        path += isCode ? static_cast<char>(std::stoi(digits.substr(1), nullptr, 16)) : uri[i];
        i += isCode ? 2 : 0;
    }
    return path;
}

// The name for a document. One without a known extension is a graph if it looks like XML.
std::string fileOf(const std::string& uri, const std::string& text) {
    std::string path = pathOf(uri);
    if (namesEffectFile(path))
        return path;
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    const bool isXml = first != std::string::npos && text[first] == '<' &&
                       (text.find("<graph") != std::string::npos || text.substr(first, 2) == "<?");
    return path + (isXml ? ".pbg" : ".pbk");
}

class Server {
public:
    Server(int input, int output, double timeoutSeconds)
        : rpc_(input, output), worker_(timeoutSeconds) {}

    void run() {
        while (!hasExited_) {
            startCheck();
            wait();
        }
        if (!isShutDown_)
            throw Failure(ExitCode::RenderFailed, "the client has ended without \"shutdown\"");
    }

private:
    using Handler = void (Server::*)(const Json& id, const Json& parameters);
    struct Method {
        std::string_view name;
        Handler handler;
        bool isRequest;
    };

    void wait() {
        std::array<pollfd, 2> polled = {
            {{rpc_.input(), POLLIN, 0}, {worker_.descriptor(), POLLIN, 0}}};
        if (!worker_.isBusy())
            polled[1].fd = -1; // ignored
        poll(polled.data(), polled.size(), waitMilliseconds());
        const bool isLate = worker_.deadline() && Clock::now() >= *worker_.deadline();
        if (worker_.isBusy() && (polled[1].revents != 0 || isLate))
            if (const auto found = worker_.receive())
                publish(*found);
        if (polled[0].revents != 0)
            takeMessages();
    }

    // Until the next document is due or the child is late; -1: for ever.
    int waitMilliseconds() const {
        std::optional<Clock::time_point> first = worker_.deadline();
        if (!worker_.isBusy())
            for (const auto& [uri, document] : documents_)
                if (document.due)
                    first = first ? std::min(*first, *document.due) : *document.due;
        if (!first)
            return -1;
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(*first - Clock::now()).count();
        return static_cast<int>(std::clamp<std::int64_t>(left + 1, 0, 1'000'000));
    }

    void startCheck() {
        if (worker_.isBusy())
            return;
        for (auto& [uri, document] : documents_) {
            if (!document.due || *document.due > Clock::now())
                continue;
            document.due.reset();
            checkedUri_ = uri;
            checkedVersion_ = document.version;
            worker_.send({document.file, document.text});
            return;
        }
    }

    // Findings about a text that has changed since are dropped; it is going to be checked again.
    void publish(const Diagnostics& found) {
        const auto document = documents_.find(checkedUri_);
        if (document == documents_.end() || document->second.version != checkedVersion_)
            return;
        rpc_.notify("textDocument/publishDiagnostics",
                    {{"uri", checkedUri_},
                     {"version", checkedVersion_},
                     {"diagnostics", lspDiagnostics(document->second, found)}});
    }

    void takeMessages() {
        if (!rpc_.read())
            hasExited_ = true;
        while (const auto message = rpc_.next())
            take(*message);
    }

    void take(const Json& message) {
        const Json id = message.value("id", Json());
        const bool isRequest = message.contains("id");
        if (!message.contains("method")) // an answer; the server asks nothing
            return;
        const auto refuse = [&](const std::exception& error) {
            if (isRequest)
                rpc_.fail(id, JsonRpc::invalidParameters, error.what());
        };
        try {
            dispatch(message.at("method").get<std::string>(), id, isRequest,
                     message.value("params", Json::object()));
        } catch (const nlohmann::json::exception& error) {
            refuse(error);
        } catch (const std::invalid_argument& error) {
            refuse(error);
        }
    }

    void dispatch(const std::string& name, const Json& id, bool isRequest, const Json& parameters) {
        static constexpr std::array<Method, 9> methods = {{
            {"initialize", &Server::initialize, true},
            {"shutdown", &Server::shutDown, true},
            {"exit", &Server::exit, false},
            {"textDocument/didOpen", &Server::open, false},
            {"textDocument/didChange", &Server::change, false},
            {"textDocument/didClose", &Server::close, false},
            {"textDocument/hover", &Server::hover, true},
            {"textDocument/completion", &Server::complete, true},
            {"textDocument/documentSymbol", &Server::symbols, true},
        }};
        const auto method = std::find_if(methods.begin(), methods.end(),
                                         [&](const Method& each) { return each.name == name; });
        const bool isKnown = method != methods.end() && method->isRequest == isRequest;
        if (!isKnown) {
            if (isRequest)
                rpc_.fail(id, JsonRpc::methodNotFound, "there is no request \"" + name + "\"");
        } else if (isRequest && !isInitialized_ && name != "initialize") {
            rpc_.fail(id, JsonRpc::notInitialized, "\"initialize\" must be the first request");
        } else if (isRequest && isShutDown_) {
            rpc_.fail(id, JsonRpc::invalidRequest, "the server is shut down");
        } else {
            (this->*method->handler)(id, parameters);
        }
    }

    void initialize(const Json& id, const Json&) {
        isInitialized_ = true;
        rpc_.respond(id,
                     {{"capabilities",
                       {{"positionEncoding", "utf-16"},
                        {"textDocumentSync", {{"openClose", true}, {"change", 1}}}, // whole texts
                        {"hoverProvider", true},
                        {"completionProvider", {{"triggerCharacters", Json::array({"\"", "<"})}}},
                        {"documentSymbolProvider", true}}},
                      {"serverInfo", {{"name", "pbhost"}, {"version", PBHOST_VERSION}}}});
    }

    void shutDown(const Json& id, const Json&) {
        isShutDown_ = true;
        worker_.stop();
        documents_.clear();
        rpc_.respond(id, nullptr);
    }

    void exit(const Json&, const Json&) { hasExited_ = true; }

    void open(const Json&, const Json& parameters) {
        const Json& opened = parameters.at("textDocument");
        setText(opened.at("uri"), opened.value("version", std::int64_t{0}), opened.at("text"),
                Clock::now());
    }

    void change(const Json&, const Json& parameters) {
        const Json& changed = parameters.at("textDocument");
        const Json& changes = parameters.at("contentChanges");
        if (!changes.empty())
            setText(changed.at("uri"), changed.value("version", std::int64_t{0}),
                    changes.back().at("text"), Clock::now() + pauseInTyping);
    }

    void setText(const std::string& uri, std::int64_t version, std::string text,
                 Clock::time_point due) {
        OpenDocument& document = documents_[uri];
        document.uri = uri;
        document.file = fileOf(uri, text);
        document.text = std::move(text);
        document.version = version;
        document.due = due;
    }

    void close(const Json&, const Json& parameters) {
        const std::string uri = parameters.at("textDocument").at("uri");
        documents_.erase(uri);
        rpc_.notify("textDocument/publishDiagnostics",
                    {{"uri", uri}, {"diagnostics", Json::array()}});
    }

    // The document of a request; answers the request if it is not open.
    const OpenDocument* documentOf(const Json& id, const Json& parameters) {
        const auto found = documents_.find(parameters.at("textDocument").at("uri"));
        if (found != documents_.end())
            return &found->second;
        rpc_.fail(id, JsonRpc::invalidParameters, "the document is not open");
        return nullptr;
    }

    static std::size_t offsetIn(const OpenDocument& document, const Json& parameters) {
        return offsetOfPosition(SourceText(document.text), parameters.at("position"));
    }

    void hover(const Json& id, const Json& parameters) {
        if (const OpenDocument* document = documentOf(id, parameters))
            rpc_.respond(id, lspHover(*document, offsetIn(*document, parameters)));
    }

    void complete(const Json& id, const Json& parameters) {
        if (const OpenDocument* document = documentOf(id, parameters))
            rpc_.respond(id, lspCompletion(*document, offsetIn(*document, parameters)));
    }

    void symbols(const Json& id, const Json& parameters) {
        if (const OpenDocument* document = documentOf(id, parameters))
            rpc_.respond(id, lspSymbols(*document));
    }

    JsonRpc rpc_;
    CheckWorker worker_;
    std::map<std::string, OpenDocument> documents_; // by their URI
    std::string checkedUri_;                        // of the document that the child has
    std::int64_t checkedVersion_ = 0;
    bool isInitialized_ = false;
    bool isShutDown_ = false;
    bool hasExited_ = false;
};

} // namespace

void serveLanguage(int input, int output, double timeoutSeconds) {
    Server(input, output, timeoutSeconds).run();
}

} // namespace pbhost
