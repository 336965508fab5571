// The results of `check` in the formats of editors and of services that show them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "pbhost/diagnostics/diagnostic.h"

namespace pbhost {

struct CheckedFile {
    std::string file; // as found
    Diagnostics found;
    double seconds = 0;
};

// Writes the results of all files as one text. Paths are written relative to the current folder
// where they are below it.
using WriteReport = std::string (*)(const std::vector<CheckedFile>& files);

struct ReportFormat {
    const char* name;
    WriteReport write;
};

const std::vector<ReportFormat>& reportFormats();

// The parts of the formats; each is in a file of its own or in reports.cpp.
std::string jsonReport(const std::vector<CheckedFile>& files);
std::string sarifReport(const std::vector<CheckedFile>& files); // SARIF 2.1.0
std::string junitReport(const std::vector<CheckedFile>& files);
std::string githubReport(const std::vector<CheckedFile>& files); // workflow commands
std::string gitlabReport(const std::vector<CheckedFile>& files); // Code Quality
std::string gccReport(const std::vector<CheckedFile>& files);

// The number of findings of that severity in all files.
std::size_t countOf(const std::vector<CheckedFile>& files, Severity severity);

// The path relative to the current folder, with '/', if it is below it; otherwise unchanged.
std::string relativePath(const std::string& file);

// A number that identifies a finding as long as its line's text stays the same, wherever the line
// moves; 16 digits. `repetition` tells equal findings of a file apart.
std::string fingerprint(const Diagnostic& diagnostic, std::size_t repetition);

// The findings of a file, each with the number of equal ones before it.
template<class Action>
void forEachFinding(const CheckedFile& checked, Action action) {
    std::vector<std::string> seen;
    for (const Diagnostic& each : checked.found) {
        const std::string key = fingerprint(each, 0);
        std::size_t repetition = 0;
        for (const std::string& before : seen)
            repetition += before == key ? 1 : 0;
        seen.push_back(key);
        action(each, repetition);
    }
}

} // namespace pbhost
