#include "pbhost/live/server/page_requests.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <tuple>

#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace {

// An extension as those of pictures, letters and digits, with its dot.
std::string checkedExtension(const std::string& extension) {
    const bool isPlain = std::all_of(extension.begin(), extension.end(),
                                     [](unsigned char c) { return std::isalnum(c) != 0; });
    if (!isPlain)
        throw Failure(ExitCode::Usage, "the extension '" + extension + "' is invalid");
    return "." + extension;
}

} // namespace

PageRequests::PageRequests(Workspace& shared) : workspace_(shared) {
    if (!shared.request.file.empty())
        file_ = std::filesystem::absolute(shared.request.file).string();
}

Data PageRequests::complete(Data request) const {
    const std::string what = request.at("do");
    if (what == "openProject") {
        const std::string project = workspace_.newFile(".json");
        writeTextFile(project, request.at("text").get<std::string>());
        return {{"do", "load"}, {"id", request.value("id", Data(0))}, {"project", project}};
    }
    for (const char* name : {"path", "project", "file", "settings"})
        request.erase(name);
    workspace_.namePictures(request);
    if (what == "load")
        completeLoad(request);
    else if (what == "savePicture")
        request["path"] = workspace_.newFile(checkedExtension(request.at("extension")));
    else if (what == "saveProject")
        request["path"] = workspace_.newFile(".json");
    return request;
}

void PageRequests::completeLoad(Data& request) const {
    const LiveRequest& asked = workspace_.request;
    request["file"] = file_;
    // Values of the command line are for the first load only.
    if (request.value("isFirst", false) || file_.empty()) {
        if (!asked.project.empty())
            request["project"] = asked.project;
        request["settings"] = asked.settings;
    }
    const Data clock = workspace_.clock();
    for (const char* name : {"fps", "first"})
        if (!request.contains(name)) // otherwise that of an opened project
            request[name] = clock[name];
    if (!request.contains("depth"))
        request["depth"] = asked.depth;
    if (asked.size.first != 0)
        std::tie(request["width"], request["height"]) = asked.size;
}

void PageRequests::adapt(Data& reply) {
    if (reply.value("do", "") == "load")
        file_ = reply.at("file");
    if (const auto path = reply.find("path"); path != reply.end()) {
        reply["url"] =
            "saved/" + std::filesystem::path(path->get<std::string>()).filename().string();
        reply.erase("path");
    }
    if (const auto text = reply.find("text"); text != reply.end())
        *text = workspace_.withoutFolder(text->get<std::string>());
    workspace_.numberPictures(reply);
}

std::string PageRequests::source() const {
    try {
        return readWholeFile(file_, ExitCode::BadKernel);
    } catch (const Failure&) {
        return ""; // the reply to the load says why
    }
}

} // namespace pbhost::live
