#include "pbhost/session/load_check.h"

#include <algorithm>
#include <iostream>

#include "engine/pixels/channel_order.h"
#include "pbhost/diagnostics/compile_messages.h"
#include "pbhost/diagnostics/mapped_file.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/printable.h"
#include "pbhost/lint/lint.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace {

Diagnostics findingsAbout(hostkit::Host& host, const std::string& file) {
    try {
        const EffectFile model(host, file);
        const MappedFile mapped(model);
        DiagnosticList list(file, mapped.source);
        lintFile(mapped, list);
        sortDiagnostics(list.found);
        return std::move(list.found);
    } catch (const Failure&) { // the file is missing
        return {};
    }
}

// Errors, and unless quiet the first warnings, because a file may cause any number.
std::string shownText(const Diagnostics& found, bool isQuiet) {
    constexpr std::size_t mostWarnings = 50;
    std::size_t warnings = 0;
    std::string text;
    for (const Diagnostic& each : found)
        if (each.severity == Severity::Error || (!isQuiet && warnings++ < mostWarnings))
            text += asGccText(each);
    if (warnings > mostWarnings)
        text += "pbhost: " + std::to_string(warnings - mostWarnings) +
                " more warnings; to see all: pbhost check FILE\n";
    return text;
}

bool tellsOfShader(const std::string& message) {
    return message.starts_with(failureMark);
}

void addLog(const MappedFile& mapped, std::string_view log, DiagnosticList& list) {
    for (const CompileFailure& failure : readErrorLog(log))
        if (const auto program = mapped.programNamed(failure.name, hostSwizzle))
            addDriverMessages(list, *program, failure, false);
}

const char* failureOf(const FileReport& report, bool isStrict) {
    if (!report.doesCompile)
        return ": does not compile";
    if (hasErrors(report.found))
        return ": the graph has errors";
    return isStrict && !report.found.empty() ? ": has warnings, which --strict does not allow"
                                             : nullptr;
}

} // namespace

bool hasGraph(const hostkit::Effect& effect) {
    return effect.title() != std::string(titlePrefix) + titleWithoutGraph;
}

KernelFailure cannotBeRun(hostkit::Host& host, const std::string& shownName,
                          const std::string& file, const std::vector<std::string>& messages) {
    std::string text = shownName + ": cannot be run:";
    for (const std::string& message : messages)
        if (!message.empty())
            text.append(" ").append(message);
    const bool isFound = !messages.empty();
    if (!isFound)
        text.append(" the kernel or graph does not exist: ")
            .append(file)
            .append(
                "\n(set the folder to search: pbhost prefs set rootFolder DIR; or give the file: "
                "--answer FILE)");
    const bool lacksOpenGl = isFound && messages.front() == openGlLacks;
    Diagnostics found = lacksOpenGl ? Diagnostics() : findingsAbout(host, file);
    const std::string shown = shownText(found, false);
    return {lacksOpenGl ? ExitCode::RenderFailed : ExitCode::BadKernel, text + "\n" + shown,
            std::move(found)};
}

FileReport reportOnFile(Session& session, const std::string& file,
                        const std::vector<std::string>& messages) {
    FileReport report;
    const bool hasFailedShader = std::any_of(messages.begin(), messages.end(), tellsOfShader);
    const std::string log = hasFailedShader ? session.takeErrorLog() : "";
    const EffectFile model(session.host, file);
    const MappedFile mapped(model);
    DiagnosticList list(file, mapped.source);
    lintFile(mapped, list);
    // A node without a kernel fails like a shader, and is an error of the graph.
    const std::size_t before = list.found.size();
    addLog(mapped, log, list);
    const bool isOfKernel = list.found.size() > before;
    report.doesCompile =
        !hasFailedShader || (!isOfKernel && model.isGraph && hasErrors(list.found));
    report.inputs = model.isGraph ? model.graph.inputs.size() : model.kernel.inputs.size();
    report.found = std::move(list.found);
    if (report.doesCompile && !model.isGraph) // so it can be rendered
        for (Diagnostic& each : report.found)
            each.severity = Severity::Warning;
    sortDiagnostics(report.found);
    for (const std::string& message : messages)
        if (!message.empty() && (!tellsOfShader(message) || log.empty()))
            report.messages.push_back(message);
    return report;
}

void requireGood(const FileReport& report, const std::string& shownName,
                 const FindingOptions& options) {
    for (const std::string& message : report.messages)
        std::cerr << printable(message) << "\n";
    const std::string shown = shownText(report.found, options.isQuiet);
    if (const char* failure = failureOf(report, options.isStrict))
        throw KernelFailure(ExitCode::BadKernel, shownName + failure + "\n" + shown, report.found);
    std::cerr << shown;
}

} // namespace pbhost
