#include "pbhost/session/load_check.h"

#include <algorithm>
#include <utility>

#include "command/command_scope.h"
#include "engine/pixels/channel_order.h"
#include "engine/program/glsl_generator.h"
#include "pbhost/diagnostics/compile_messages.h"
#include "pbhost/diagnostics/hints.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/files/printable.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace {

// Looks up names for messages.
struct FileModel : EffectFile {
    using EffectFile::EffectFile;

    std::string hints() const { return isGraph ? hintsFor(graph) : hintsFor(kernel); }

    std::optional<ProgramTexts> texts(const std::string& name) const {
        return isGraph ? nodeTexts(graph, name, hostSwizzle)
                       : std::optional(kernelTexts(kernel, hostSwizzle));
    }

    // The kernel of a graph's program; null: the program has none.
    const pbKernelInfo* kernelOf(const std::string& program) const {
        for (const pbgNodeInfo& node : graph.nodes)
            if (nameText(node.id) == program)
                return kernelOfNode(graph, node);
        return nullptr;
    }

    // The graph's failed nodes, each once.
    std::string failedNodes(const std::vector<CompileFailure>& failures) const {
        std::string lines, last;
        for (const CompileFailure& failure : failures) {
            const pbKernelInfo* runs = kernelOf(failure.name);
            if (runs != nullptr && std::exchange(last, failure.name) != failure.name)
                lines.append("  node \"" + failure.name + "\" runs kernel \"")
                    .append(nameText(runs->name))
                    .append("\"\n");
        }
        return lines;
    }
};

std::string hintsOf(hostkit::Host& host, const std::string& file) {
    try {
        return FileModel(host, file).hints();
    } catch (const Failure&) { // the file is missing
        return "";
    }
}

bool tellsOfShader(const std::string& message) {
    return message.starts_with(failureMark);
}

std::string asLines(const std::vector<std::string>& sentences, const std::string& start) {
    std::string lines;
    for (const std::string& sentence : sentences)
        lines += start + sentence + "\n";
    return lines;
}

void throwCompileFailure(const std::string& file, const FileModel& model,
                         const std::vector<CompileFailure>& failures,
                         const std::vector<std::string>& messages) {
    if (failures.empty()) // empty if it was exported
        throw Failure(ExitCode::BadKernel,
                      file + ": does not compile; the exported error log says why\n" +
                          asLines(messages, "  "));
    throw Failure(
        ExitCode::BadKernel,
        file + ": does not compile.\n" + model.hints() + model.failedNodes(failures) +
            "The OpenGL driver says:\n" +
            describe(failures, [&](const std::string& name) { return model.texts(name); }) +
            "  (lines are those of the generated text; to see it: pbhost translate " + file + ")");
}

} // namespace

bool hasGraph(const hostkit::Effect& effect) {
    return effect.title() != std::string(titlePrefix) + titleWithoutGraph;
}

Failure cannotBeRun(hostkit::Host& host, const std::string& shownName, const std::string& file,
                    const std::vector<std::string>& messages) {
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
    return {lacksOpenGl ? ExitCode::RenderFailed : ExitCode::BadKernel,
            text + "\n" + (lacksOpenGl ? "" : hintsOf(host, file))};
}

std::string warningsOfLoad(Session& session, const std::string& file,
                           const std::vector<std::string>& messages) {
    if (std::any_of(messages.begin(), messages.end(), tellsOfShader)) {
        const std::vector<CompileFailure> failures = readErrorLog(session.takeErrorLog());
        const FileModel model(session.host, file);
        const bool isOfKernel =
            std::any_of(failures.begin(), failures.end(), [&](const CompileFailure& failure) {
                return model.kernelOf(failure.name) != nullptr;
            });
        if (isOfKernel || !model.isGraph || checkWiring(model.graph).errors.empty())
            throwCompileFailure(file, model, failures, messages);
    }
    std::string warnings;
    for (const std::string& message : messages)
        if (!message.empty() && !tellsOfShader(message))
            warnings.append(message).append("\n");
    return printable(warnings);
}

FileFacts readFacts(hostkit::Host& host, const std::string& file) {
    const EffectFile model(host, file);
    if (!model.isGraph)
        return {model.kernel.inputs.size(), {}};
    return {model.graph.inputs.size(), checkWiring(model.graph)};
}

std::string warningsOfWiring(const std::string& shownName, const WiringFaults& faults,
                             bool isStrict) {
    if (!faults.errors.empty() || (isStrict && !faults.warnings.empty()))
        throw Failure(ExitCode::BadKernel, shownName + ": the graph has wiring errors.\n" +
                                               asLines(faults.errors, "  ") +
                                               asLines(faults.warnings, "  warning: "));
    return printable(asLines(faults.warnings, "pbhost: warning: " + shownName + ": "));
}

} // namespace pbhost
