#include "pbhost/commands/check_command.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <thread>

#include "pbhost/check/check_pool.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// The kernels and graphs below a folder, sorted. Folders that cannot be read and hidden ones are
// passed over.
void addFolder(const fs::path& folder, std::vector<std::string>& files) {
    std::vector<std::string> found;
    std::error_code ignored;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                           ignored);
    for (; entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
        const bool isHidden = entry->path().filename().string().starts_with('.');
        if (entry->is_directory(ignored) && isHidden)
            entry.disable_recursion_pending();
        else if (entry->is_regular_file(ignored) && namesEffectFile(entry->path().string()))
            found.push_back(entry->path().string());
    }
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
}

std::vector<std::string> filesOf(const std::vector<std::string>& paths) {
    std::vector<std::string> files;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (fs::is_directory(path, ignored))
            addFolder(path, files);
        else
            files.push_back(path);
    }
    if (files.empty())
        throw Failure(ExitCode::Usage, "there is no kernel (.pbk) or graph (.pbg) to check");
    return files;
}

std::string counted(std::size_t count, const char* what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string summary(const std::vector<CheckedFile>& files) {
    return counted(files.size(), "file") +
           " checked: " + counted(countOf(files, Severity::Error), "error") + ", " +
           counted(countOf(files, Severity::Warning), "warning");
}

} // namespace

void check(const CheckCommandRequest& request, std::string& text) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    std::vector<CheckedFile> files = checkFiles(
        filesOf(request.paths), request.jobs == 0 ? processors : request.jobs, request.timeout);
    const std::string summaryLine = summary(files);
    const bool hasFailed = countOf(files, Severity::Error) > 0 ||
                           (request.isStrict && countOf(files, Severity::Warning) > 0);
    if (request.isQuiet)
        for (CheckedFile& each : files)
            std::erase_if(each.found,
                          [](const auto& found) { return found.severity == Severity::Warning; });
    const auto& formats = reportFormats();
    text = std::find_if(formats.begin(), formats.end(), [&](const ReportFormat& format) {
               return format.name == request.format;
           })->write(files);
    if (hasFailed)
        throw Failure(ExitCode::BadKernel, summaryLine);
    std::cerr << "pbhost: " << summaryLine << "\n";
}

} // namespace pbhost
