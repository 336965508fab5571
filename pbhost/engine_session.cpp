#include "pbhost/engine_session.h"

#include <GL/glew.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "engine/channel_order.h"
#include "engine/glsl_generator.h"
#include "gpu/features.h"
#include "pbhost/compile_messages.h"
#include "pbhost/effect_file.h"
#include "pbhost/failure.h"
#include "pbhost/hints.h"
#include "pbhost/reports.h"

namespace pbhost {

namespace {

// The engine prints the whole text of a shader that does not compile on standard output, which here
// belongs to the verb. The message on standard error quotes the lines that matter.
class QuietStandardOutput {
public:
    QuietStandardOutput() : saved_(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~QuietStandardOutput() {
        std::fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
    }
    QuietStandardOutput(const QuietStandardOutput&) = delete;
    QuietStandardOutput& operator=(const QuietStandardOutput&) = delete;

private:
    int saved_;
};

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += text;
    return all;
}

std::vector<CompileFailure> failuresIn(const Reports& reports) {
    std::vector<CompileFailure> failures;
    for (const std::string& entry : reports.errorLog())
        failures.push_back(readErrorLogEntry(entry));
    return failures;
}

[[noreturn]] void throwCompileFailure(const std::string& path, const std::string& hints,
                                      const std::vector<CompileFailure>& failures,
                                      const FindTexts& findTexts) {
    throw Failure(ExitCode::BadKernel,
                  path + ": does not compile.\n" + hints + "The OpenGL driver says:\n" +
                      describe(failures, findTexts) +
                      "  (lines are those of the generated text; to see it: pbhost translate " +
                      path + ")");
}

void requireRunnable(const std::string& path, const std::string& hints, const pbGraph& graph,
                     const Reports& reports) {
    if (isRunnable(graph))
        return;
    const std::string reason = joined(reports.info());
    std::string message = path + ": cannot be run:";
    for (const std::string_view line : splitLines(reason))
        if (!line.empty())
            message.append(" ").append(line);
    throw Failure(ExitCode::BadKernel, message + "\n" + hints);
}

LoadedGraph loadKernel(const std::string& path) {
    pbKernelInfo kernel;
    readKernelFile(path, kernel);
    const Reports reports;
    LoadedGraph loaded{makeObject<pbGraph>(kernel, hostChannelOrder), ""};
    const std::string hints = hintsFor(kernel);
    requireRunnable(path, hints, *loaded.graph, reports);
    const auto failures = failuresIn(reports);
    if (!failures.empty())
        throwCompileFailure(path, hints, failures, [&](const std::string&) {
            return std::optional(kernelTexts(kernel, hostChannelOrder));
        });
    return loaded;
}

LoadedGraph loadGraph(const std::string& path) {
    pbGraphInfo info;
    readGraphFile(path, info);
    const Reports reports;
    LoadedGraph loaded{makeObject<pbGraph>(info, hostChannelOrder), ""};
    const std::string hints = hintsFor(info);
    requireRunnable(path, hints, *loaded.graph, reports);
    const FindTexts findTexts = [&](const std::string& id) {
        return nodeTexts(info, id, hostChannelOrder);
    };
    // A node without a kernel has no program to blame: the graph runs, and the node shows white.
    const auto failures = failuresIn(reports);
    if (std::any_of(failures.begin(), failures.end(),
                    [&](const CompileFailure& failure) { return findTexts(failure.name); }))
        throwCompileFailure(path, hints, failures, findTexts);
    for (const pbgNodeInfo& node : info.nodes)
        if (kernelOfNode(info, node) == nullptr)
            loaded.warnings.append("pbhost: " + path + ": node \"")
                .append(nameText(node.id))
                .append("\": the graph has no kernel \"")
                .append(nameText(node.name))
                .append("\"\n");
    loaded.warnings += joined(reports.info());
    return loaded;
}

} // namespace

EngineSession::EngineSession() {
    setDeviceName("Tvelmarondine");
    createDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
    current_ = std::make_unique<ContextSwitch>(device_);
    reportVersion();
    glewInit(); // its result says nothing here: it misses a display that nobody needs
    if (const char* missing = missingFeature(); missing != nullptr) {
        current_.reset();
        destroyDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
        throw Failure(ExitCode::RenderFailed,
                      std::string("OpenGL cannot be used here: the driver lacks ") + missing +
                          " (a software driver for EGL will do)");
    }
}

EngineSession::~EngineSession() {
    current_.reset();
    destroyDevice(device_.glWindow, device_.glDeviceContext, device_.glRenderContext);
}

LoadedGraph EngineSession::load(const std::string& path) {
    const bool isGraph = isGraphFile(path);
    const QuietStandardOutput quiet;
    return isGraph ? loadGraph(path) : loadKernel(path);
}

} // namespace pbhost
