#include "pbhost/live/child/work.h"

#include <new>
#include <string>

#include "pbhost/live/child/instance.h"
#include "pbhost/live/child/message.h"
#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace {

Message answer(Instance& instance, const Data& request) {
    const std::string what = request.at("do").get<std::string>();
    if (what == "picture")
        return instance.picture(request);
    if (what == "load")
        return {instance.load(request), {}};
    if (what == "pixel")
        return {instance.pixel(request), {}};
    if (what == "savePicture")
        instance.savePicture(request);
    else if (what == "saveProject")
        instance.saveProject(request);
    else
        throw Failure(ExitCode::Usage, "the request \"" + what + "\" is unknown");
    return {Data{{"path", request.at("path")}}, {}};
}

// The findings about the file that have a line.
Data placesAsJson(const Diagnostics& found) {
    Data places = Data::array();
    for (const Diagnostic& each : found)
        if (each.place.line != 0 && each.severity == Severity::Error)
            places.push_back({{"line", each.place.line},
                              {"column", each.place.column},
                              {"message", each.message}});
    return places;
}

Message failed(const Data& request, ExitCode code, const std::string& text,
               const Diagnostics& found = {}) {
    return {Data{{"do", "failed"},
                 {"what", request.value("do", std::string())},
                 {"code", static_cast<int>(code)},
                 {"text", text},
                 {"places", placesAsJson(found)}},
            {}};
}

Message answerOrFail(Instance& instance, const Data& request) {
    try {
        Message reply = answer(instance, request);
        reply.head["do"] = request.at("do");
        return reply;
    } catch (const KernelFailure& failure) {
        return failed(request, failure.code, failure.what(), failure.found);
    } catch (const Failure& failure) {
        return failed(request, failure.code, failure.what());
    } catch (const std::bad_alloc&) {
        return failed(request, ExitCode::RenderFailed, "out of memory");
    } catch (long) { // thrown by code shared with the module when it is out of memory
        return failed(request, ExitCode::RenderFailed, "out of memory");
    } catch (const std::exception& error) {
        return failed(request, ExitCode::RenderFailed, error.what());
    }
}

} // namespace

void answerRequests(int socket, const SessionOptions& options) {
    Instance instance(options);
    Message request;
    while (readMessage(socket, request)) {
        Message reply = answerOrFail(instance, request.head);
        reply.head["id"] = request.head.value("id", Data(0));
        if (!writeMessage(socket, reply))
            return;
    }
}

} // namespace pbhost::live
