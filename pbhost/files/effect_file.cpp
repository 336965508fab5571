#include "pbhost/files/effect_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <utility>

#include "pbhost/files/printable.h"
#include "pbhost/files/read_file.h"
#include "pbhost/process/failure.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"

namespace pbhost {

namespace {

std::string lowerEnding(const std::string& path) {
    std::string ending = path.substr(path.size() - std::min<std::size_t>(path.size(), 4));
    for (char& c : ending)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ending;
}

Failure unreadable(const std::string& path, const std::string& reason) {
    return {ExitCode::BadKernel, path + ": cannot be read: " + reason};
}

std::string readWhole(const std::string& path) {
    isGraphFile(path);
    std::error_code ignored;
    // Not opened, because opening a pipe would block.
    if (std::filesystem::is_other(path, ignored))
        throw unreadable(path, "it is not a regular file");
    return readWholeFile(path, ExitCode::BadKernel);
}

} // namespace

bool namesEffectFile(const std::string& path) {
    const std::string ending = lowerEnding(path);
    return ending == ".pbk" || ending == ".pbg";
}

bool isGraphFile(const std::string& path) {
    if (!namesEffectFile(path))
        throw Failure(ExitCode::BadKernel,
                      path + ": the name is neither that of a kernel (.pbk) nor of a graph (.pbg)");
    return lowerEnding(path) == ".pbg";
}

void requireReadable(const std::string& path) {
    isGraphFile(path);
    if (!isUtf8(std::filesystem::absolute(path).string()))
        throw unreadable(path, "the name is not UTF-8");
    readWhole(path);
}

EffectFile::EffectFile(hostkit::Host& host, const std::string& path)
    : EffectFile(host, path, readWhole(path)) {}

EffectFile::EffectFile(hostkit::Host& host, const std::string& path, std::string fileText)
    : isGraph(isGraphFile(path)), text(std::move(fileText)), command_(0, 0, host.inData()) {
    if (isGraph)
        readGraphText(text, graph);
    else
        PBKParser(text, kernel).parseKernel();
}

} // namespace pbhost
