// The format SARIF 2.1.0.

#include <algorithm>
#include <filesystem>

#include "pbhost/check/reports.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

namespace {

// A path as a URI: relative if it is, otherwise of the scheme "file".
std::string uriOf(const std::string& path) {
    constexpr std::string_view plain = "-._~/";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (isNameByte(c) || plain.find(c) != std::string_view::npos) {
            uri += c;
        } else {
            uri += '%';
            uri += "0123456789ABCDEF"[byte >> 4];
            uri += "0123456789ABCDEF"[byte & 15U];
        }
    }
    return uri;
}

Json rulesAsJson() {
    Json rules = Json::array();
    for (const DiagnosticRule& rule : diagnosticRules())
        rules.push_back({{"id", rule.id},
                         {"shortDescription", {{"text", rule.description}}},
                         {"fullDescription", {{"text", rule.description}}}});
    return rules;
}

std::size_t ruleIndex(const std::string& id) {
    const auto& rules = diagnosticRules();
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [&](const DiagnosticRule& rule) { return rule.id == id; });
    return static_cast<std::size_t>(found - rules.begin());
}

// Columns are counted in UTF-16 code units, from 1.
Json regionOf(const Diagnostic& diagnostic) {
    Json region = {{"startLine", diagnostic.place.line}};
    if (diagnostic.place.column != 0) {
        const std::size_t begin = diagnostic.place.column - 1;
        const std::string& line = diagnostic.sourceLine;
        region["startColumn"] = utf16Length(line, begin) + 1;
        region["endColumn"] =
            utf16Length(line, begin + std::max<std::size_t>(diagnostic.length, 1)) + 1;
    }
    if (!diagnostic.sourceLine.empty())
        region["snippet"] = {{"text", diagnostic.sourceLine}};
    return region;
}

Json locationOf(const Diagnostic& diagnostic) {
    const std::string path = relativePath(diagnostic.file);
    Json artifact = {{"uri", uriOf(path)}};
    if (!path.starts_with('/'))
        artifact["uriBaseId"] = "SRCROOT";
    Json physical = {{"artifactLocation", artifact}};
    if (diagnostic.place.line != 0)
        physical["region"] = regionOf(diagnostic);
    return {{"physicalLocation", physical}};
}

// A sentence, as the format asks for.
std::string sentence(const Diagnostic& diagnostic) {
    std::string text = diagnostic.message;
    for (const std::string& note : diagnostic.notes)
        text += "; " + note;
    return text + (text.ends_with('.') ? "" : ".");
}

Json resultOf(const Diagnostic& diagnostic, std::size_t repetition) {
    return {{"ruleId", diagnostic.rule},
            {"ruleIndex", ruleIndex(diagnostic.rule)},
            {"level", severityName(diagnostic.severity)},
            {"message", {{"text", sentence(diagnostic)}}},
            {"locations", Json::array({locationOf(diagnostic)})},
            {"partialFingerprints", {{"pbhostLine/v1", fingerprint(diagnostic, repetition)}}}};
}

} // namespace

std::string sarifReport(const std::vector<CheckedFile>& files) {
    Json results = Json::array();
    for (const CheckedFile& checked : files)
        forEachFinding(checked, [&](const Diagnostic& each, std::size_t repetition) {
            results.push_back(resultOf(each, repetition));
        });
    const std::string here = std::filesystem::current_path().generic_string();
    const Json driver = {{"name", "pbhost"},
                         {"fullName", "pbhost check"},
                         {"semanticVersion", PBHOST_VERSION ".0"},
                         {"rules", rulesAsJson()}};
    const Json run = {{"tool", {{"driver", driver}}},
                      {"columnKind", "utf16CodeUnits"},
                      {"originalUriBaseIds",
                       {{"SRCROOT", {{"uri", uriOf(here.ends_with('/') ? here : here + "/")}}}}},
                      {"results", results}};
    return jsonText(Json{{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                         {"version", "2.1.0"},
                         {"runs", Json::array({run})}});
}

} // namespace pbhost
