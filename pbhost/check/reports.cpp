#include "pbhost/check/reports.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>

#include "pbhost/check/diagnostic_json.h"
#include "pbhost/files/printable.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

// Replaces characters of a text by the texts of a table.
template<std::size_t count>
std::string escaped(std::string_view text,
                    const std::array<std::pair<char, const char*>, count>& table) {
    std::string result;
    for (const char c : text) {
        const auto found = std::find_if(table.begin(), table.end(),
                                        [&](const auto& each) { return each.first == c; });
        if (found == table.end())
            result += c;
        else
            result += found->second;
    }
    return result;
}

std::string inXml(std::string_view text) {
    return escaped<5>(
        printable(std::string(text)),
        {{{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\n', "&#10;"}}});
}

std::string inCommand(std::string_view text) {
    return escaped<3>(text, {{{'%', "%25"}, {'\r', "%0D"}, {'\n', "%0A"}}});
}

std::string inProperty(std::string_view text) {
    return escaped<2>(inCommand(text), {{{':', "%3A"}, {',', "%2C"}}});
}

std::string withNotes(const Diagnostic& diagnostic) {
    std::string text = diagnostic.message;
    for (const std::string& note : diagnostic.notes)
        text += "\n" + note;
    return text;
}

std::size_t countIn(const Diagnostics& found, Severity severity) {
    return static_cast<std::size_t>(std::count_if(
        found.begin(), found.end(), [&](const auto& each) { return each.severity == severity; }));
}

std::string attribute(const char* name, std::string_view value) {
    return " " + std::string(name) + "=\"" + inXml(value) + "\"";
}

// The folder of a file as the name of a class, with '.' between its parts.
std::string className(const std::string& file) {
    std::string name = "pbhost.check";
    for (const fs::path& part : fs::path(file).parent_path())
        if (part != "/" && part != ".")
            name += "." + escaped<1>(part.string(), {{{'.', "_"}}});
    return name;
}

std::string testCase(const CheckedFile& checked) {
    const std::string file = relativePath(checked.file);
    std::string text = "    <testcase" + attribute("classname", className(file)) +
                       attribute("name", fs::path(file).filename().string()) +
                       attribute("file", file) + attribute("time", std::to_string(checked.seconds));
    if (checked.found.empty())
        return text + "/>\n";
    text += ">\n";
    Diagnostics errors, warnings;
    for (const Diagnostic& each : checked.found)
        (each.severity == Severity::Error ? errors : warnings).push_back(each);
    if (!errors.empty())
        text += "      <failure" + attribute("type", errors[0].rule) +
                attribute("message", errors[0].message) + ">" + inXml(asGccText(errors)) +
                "</failure>\n";
    if (!warnings.empty())
        text += "      <system-out>" + inXml(asGccText(warnings)) + "</system-out>\n";
    return text + "    </testcase>\n";
}

} // namespace

const std::vector<ReportFormat>& reportFormats() {
    static const std::vector<ReportFormat> formats = {
        {"gcc", gccReport},     {"json", jsonReport},     {"sarif", sarifReport},
        {"junit", junitReport}, {"github", githubReport}, {"gitlab", gitlabReport},
    };
    return formats;
}

std::size_t countOf(const std::vector<CheckedFile>& files, Severity severity) {
    std::size_t count = 0;
    for (const CheckedFile& each : files)
        count += countIn(each.found, severity);
    return count;
}

std::string relativePath(const std::string& file) {
    std::error_code failed;
    const fs::path here = fs::current_path(failed);
    const fs::path relative =
        fs::absolute(file, failed).lexically_normal().lexically_relative(here);
    const bool isBelow = !failed && !relative.empty() && *relative.begin() != "..";
    return isBelow ? relative.generic_string() : file;
}

std::string fingerprint(const Diagnostic& diagnostic, std::size_t repetition) {
    std::string line = diagnostic.sourceLine;
    line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    for (const std::string& part : {relativePath(diagnostic.file), diagnostic.rule,
                                    diagnostic.message, line, std::to_string(repetition)}) {
        for (const char c : part + '\n') {
            hash ^= static_cast<unsigned char>(c);
            hash *= 1099511628211U;
        }
    }
    std::string digits(16, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4)
        *digit = "0123456789abcdef"[hash & 15U];
    return digits;
}

std::string gccReport(const std::vector<CheckedFile>& files) {
    std::string text;
    for (const CheckedFile& each : files)
        text += asGccText(each.found);
    return text;
}

std::string jsonReport(const std::vector<CheckedFile>& files) {
    Json list = Json::array();
    for (const CheckedFile& each : files)
        list.push_back(
            {{"file", each.file}, {"seconds", each.seconds}, {"diagnostics", asJson(each.found)}});
    return jsonText(Json{{"version", 1},
                         {"files", list},
                         {"errors", countOf(files, Severity::Error)},
                         {"warnings", countOf(files, Severity::Warning)}});
}

std::string junitReport(const std::vector<CheckedFile>& files) {
    double seconds = 0;
    std::size_t failures = 0;
    std::string cases;
    for (const CheckedFile& each : files) {
        seconds += each.seconds;
        failures += hasErrors(each.found) ? 1 : 0;
        cases += testCase(each);
    }
    const std::string counts = attribute("tests", std::to_string(files.size())) +
                               attribute("failures", std::to_string(failures)) +
                               attribute("errors", "0") +
                               attribute("time", std::to_string(seconds));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite" +
           attribute("name", "pbhost check") + counts + ">\n" + cases +
           "  </testsuite>\n</testsuites>\n";
}

std::string githubReport(const std::vector<CheckedFile>& files) {
    std::string text;
    for (const CheckedFile& checked : files)
        for (const Diagnostic& each : checked.found) {
            text += "::" + std::string(severityName(each.severity)) +
                    " file=" + inProperty(relativePath(each.file));
            if (each.place.line != 0)
                text += ",line=" + std::to_string(each.place.line);
            if (each.place.column != 0)
                text += ",col=" + std::to_string(each.place.column);
            text += ",title=" + inProperty(each.rule) + "::" + inCommand(withNotes(each)) + "\n";
        }
    return text;
}

std::string gitlabReport(const std::vector<CheckedFile>& files) {
    Json list = Json::array();
    for (const CheckedFile& checked : files)
        forEachFinding(checked, [&](const Diagnostic& each, std::size_t repetition) {
            const std::size_t line = std::max<std::size_t>(each.place.line, 1);
            list.push_back(
                {{"description", each.message},
                 {"check_name", each.rule},
                 {"fingerprint", fingerprint(each, repetition)},
                 {"severity", each.severity == Severity::Error ? "major" : "minor"},
                 {"location", {{"path", relativePath(each.file)}, {"lines", {{"begin", line}}}}}});
        });
    return jsonText(list);
}

} // namespace pbhost
