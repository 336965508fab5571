#include "pbhost/check/diagnostic_json.h"

namespace pbhost {

namespace {

Diagnostic diagnosticOf(const Json& json) {
    Diagnostic read;
    read.severity = json.at("severity") == "error" ? Severity::Error : Severity::Warning;
    read.rule = json.at("rule");
    read.message = json.at("message");
    read.file = json.at("file");
    read.place = {json.at("line"), json.at("column")};
    read.length = json.at("length");
    read.nodes = json.at("nodes");
    read.notes = json.at("notes");
    read.sourceLine = json.at("source");
    return read;
}

} // namespace

Json asJson(const Diagnostic& diagnostic) {
    return {{"file", diagnostic.file},
            {"line", diagnostic.place.line},
            {"column", diagnostic.place.column},
            {"length", diagnostic.length},
            {"severity", severityName(diagnostic.severity)},
            {"rule", diagnostic.rule},
            {"message", diagnostic.message},
            {"nodes", diagnostic.nodes},
            {"notes", diagnostic.notes},
            {"source", diagnostic.sourceLine}};
}

Json asJson(const Diagnostics& found) {
    Json array = Json::array();
    for (const Diagnostic& each : found)
        array.push_back(asJson(each));
    return array;
}

Diagnostics diagnosticsOf(const Json& json) {
    Diagnostics found;
    for (const Json& each : json)
        found.push_back(diagnosticOf(each));
    return found;
}

} // namespace pbhost
