#include "pbhost/load_check.h"

#include <algorithm>
#include <utility>

#include "engine/channel_order.h"
#include "engine/glsl_generator.h"
#include "host/command_scope.h"
#include "pbhost/compile_messages.h"
#include "pbhost/effect_file.h"
#include "pbhost/hints.h"
#include "pbhost/printable.h"

namespace pbhost {

namespace {

// What messages say of a file.
struct FileModel : EffectFile {
    using EffectFile::EffectFile;

    std::string hints() const { return isGraph ? hintsFor(graph) : hintsFor(kernel); }

    std::optional<ProgramTexts> texts(const std::string& name) const {
        return isGraph ? nodeTexts(graph, name, hostChannelOrder)
                       : std::optional(kernelTexts(kernel, hostChannelOrder));
    }

    std::string lostNodes(const std::string& shownName) const {
        std::string lines;
        for (const pbgNodeInfo& node : graph.nodes)
            if (kernelOfNode(graph, node) == nullptr)
                lines.append("pbhost: " + shownName + ": node \"")
                    .append(nameText(node.id))
                    .append("\": the graph has no kernel \"")
                    .append(nameText(node.name))
                    .append("\"\n");
        return lines;
    }
};

std::string hintsOf(hostkit::Host& host, const std::string& file) {
    const CommandScope scope(0, 0, host.inData());
    try {
        return FileModel(file).hints();
    } catch (const Failure&) { // it is not there
        return "";
    }
}

bool tellsOfShader(const std::string& message) {
    return message.starts_with("!!!");
}

void throwCompileFailure(const std::string& file, const FileModel& model,
                         const std::vector<CompileFailure>& failures) {
    throw Failure(
        ExitCode::BadKernel,
        file + ": does not compile.\n" + model.hints() + "The OpenGL driver says:\n" +
            describe(failures, [&](const std::string& name) { return model.texts(name); }) +
            "  (lines are those of the generated text; to see it: pbhost translate " + file + ")");
}

} // namespace

bool hasGraph(const hostkit::Effect& effect) {
    return effect.title() != "TVM:(Invalid PB)";
}

Failure cannotBeRun(hostkit::Host& host, const std::string& shownName, const std::string& file,
                    const std::vector<std::string>& messages) {
    std::string text = shownName + ": cannot be run:";
    for (const std::string& message : messages)
        if (!message.empty())
            text.append(" ").append(message);
    const bool isFound = !messages.empty();
    if (!isFound)
        text.append(" the kernel or graph is not there: ")
            .append(file)
            .append(
                "\n(the folder to look under: pbhost prefs set rootFolder DIR; the file itself: "
                "--answer FILE)");
    const bool lacksOpenGl = isFound && messages.front().starts_with("OpenGL can not be used");
    return {lacksOpenGl ? ExitCode::RenderFailed : ExitCode::BadKernel,
            text + "\n" + (lacksOpenGl ? "" : hintsOf(host, file))};
}

std::string warningsOfLoad(Session& session, const std::string& shownName, const std::string& file,
                           const std::vector<std::string>& messages) {
    std::string warnings;
    if (std::any_of(messages.begin(), messages.end(), tellsOfShader)) {
        const std::vector<CompileFailure> failures = readErrorLog(session.takeErrorLog());
        const CommandScope scope(0, 0, session.host.inData());
        const FileModel model(file);
        if (std::any_of(failures.begin(), failures.end(), [&](const CompileFailure& failure) {
                return model.texts(failure.name).has_value();
            }))
            throwCompileFailure(file, model, failures);
        warnings = model.lostNodes(shownName);
    }
    for (const std::string& message : messages)
        if (!message.empty())
            warnings.append(message).append("\n");
    return printable(warnings);
}

} // namespace pbhost
