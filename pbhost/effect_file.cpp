#include "pbhost/effect_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "pbhost/failure.h"
#include "pixelbender/graph_reader.h"
#include "pixelbender/pbk_parser.h"

namespace pbhost {

namespace {

Failure unreadable(const std::string& path, const std::string& reason) {
    return {ExitCode::BadKernel, path + ": cannot be read: " + reason};
}

std::ifstream openFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw unreadable(path, "it is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw unreadable(path, std::strerror(errno));
    return file;
}

std::string readWhole(const std::string& path) {
    std::ifstream file = openFile(path);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad())
        throw unreadable(path, "the disk gave an error");
    return text;
}

} // namespace

bool isGraphFile(const std::string& path) {
    const char last = path.empty() ? '\0' : path.back();
    if (last == 'g' || last == 'G')
        return true;
    if (last == 'k' || last == 'K')
        return false;
    throw Failure(ExitCode::BadKernel,
                  path + ": neither a kernel (.pbk) nor a graph (.pbg) by its name");
}

void requireReadable(const std::string& path) {
    isGraphFile(path);
    openFile(path);
}

void readKernelFile(const std::string& path, pbKernelInfo& kernel) {
    PBKParser(readWhole(path), kernel).parseKernel();
}

void readGraphFile(const std::string& path, pbGraphInfo& graph) {
    readGraphText(readWhole(path), graph);
}

} // namespace pbhost
