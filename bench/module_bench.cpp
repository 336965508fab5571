// A frame of the module, rendered by the host's commands including all checkouts, compared with the
// same OpenGL calls without module, host and engine, and with the fewest calls that give the same
// picture.

#include <GL/glew.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bench/chain.h"
#include "bench/gl_main.h"
#include "hostkit/calls/ledger.h"
#include "hostkit/effect/effect.h"
#include "hostkit/effect/frames.h"
#include "hostkit/host.h"
#include "platform/wgl.h"

namespace {

void require(bool isTrue, const char* what) {
    if (!isTrue)
        throw std::runtime_error(what);
}

// The module with two instances of the effect on a layer, which render the same graph as the
// reference programs: one releases its textures after each frame, as is the default, the other
// keeps them.
class ModuleFrame {
public:
    ModuleFrame(const pbhost::Picture& input) : plugin_(TVM_MODULE_PATH) {
        // Global setup leaves no context current.
        const HDC deviceContext = wglGetCurrentDC();
        const HGLRC context = wglGetCurrentContext();
        require(plugin_.setUp() == 0, "the module cannot be set up");
        wglMakeCurrent(deviceContext, context);
        hostkit::Host::current().project.componentBytes =
            static_cast<int>(pbhost::componentBytesOf(input.depth));
        hostkit::Layer& layer = addLayer(input);
        effect_ = &addEffect(layer, "module_bench.pbg");
        setenv("TVELMARONDINE_KEEP_TEXTURES", "1", 1);
        keeping_ = &addEffect(layer, "module_bench_keeping.pbg");
        unsetenv("TVELMARONDINE_KEEP_TEXTURES");
    }
    ~ModuleFrame() { hostkit::Host::current().project.compositions.clear(); }

    void frame(hostkit::World& output, const hostkit::RenderRequest& request = {}) {
        render(*effect_, output, request);
    }
    void keepingFrame(hostkit::World& output) { render(*keeping_, output, {}); }

private:
    static void render(hostkit::Effect& effect, hostkit::World& output,
                       const hostkit::RenderRequest& request) {
        hostkit::RenderResult result = effect.render(request, std::move(output));
        require(result.error == 0, "a frame failed");
        output = std::move(result.output);
    }
    hostkit::Effect& addEffect(hostkit::Layer& layer, const char* fileName) {
        const auto file = std::filesystem::temp_directory_path() / fileName;
        std::ofstream(file) << bench::chainText(1);
        hostkit::Host::current().scripts.answers.emplace_back(file.string());
        hostkit::Effect& effect = hostkit::addEffect(plugin_, layer);
        require(effect.apply() == 0 && effect.title() == "TVM:Chain",
                "the effect cannot be applied");
        std::filesystem::remove(file);
        return effect;
    }
    static hostkit::Layer& addLayer(const pbhost::Picture& input) {
        const int width = static_cast<int>(input.width);
        const int height = static_cast<int>(input.height);
        hostkit::Project& project = hostkit::Host::current().project;
        hostkit::World pixels = hostkit::makeWorld(width, height, project.componentBytes);
        pixels.data = input.pixels;
        return project.addComposition("bench", width, height)
            .addLayer("layer", hostkit::makeFootage("noise", std::move(pixels)));
    }

    hostkit::Plugin plugin_;
    hostkit::Effect* effect_ = nullptr;
    hostkit::Effect* keeping_ = nullptr;
};

void frame(benchmark::State& state) {
    const bench::ChainSize size = bench::frameSize(state);
    const pbhost::Picture input = bench::makeNoise(size);
    ModuleFrame module(input);
    const auto texts = bench::passTexts(1);
    bench::SameCallsProgram same(texts, bench::gain);
    const bench::FewestCallsProgram best(texts, bench::gain, input);
    hostkit::World moduleOutput = // without row padding, like the reference programs' pictures
        hostkit::makeWorld(static_cast<int>(size.width), static_cast<int>(size.height),
                           static_cast<int>(pbhost::componentBytesOf(size.depth)));
    hostkit::World keepingOutput = moduleOutput;
    std::vector<pbhost::Picture> outputs(2,
                                         pbhost::makePicture(size.width, size.height, size.depth));
    // A frame ends when its pixels are read back. Deferred work (the clearing afterwards) is not
    // measured for any program, because the module's context is not accessible for glFinish.
    bench::PairedTiming timing({[&] { module.frame(moduleOutput); },
                                [&] {
                                    same.frame(input, outputs[0]);
                                    glFlush();
                                },
                                [&] {
                                    best.frame(input, outputs[1]);
                                    glFlush();
                                },
                                [&] { module.keepingFrame(keepingOutput); }});
    timing.round(); // warms up, and fills the outputs
    if (moduleOutput.data != outputs[0].pixels || outputs[0].pixels != outputs[1].pixels ||
        keepingOutput.data != outputs[0].pixels)
        return state.SkipWithError("the module and the reference programs give different pictures");
    bench::runRounds(state, timing, "module");
    for (const std::string& fault : hostkit::ledger::takeFaults())
        state.SkipWithError(fault.c_str());
}

BENCHMARK(frame)->Apply(bench::applyFrameSizes);

// Half the resolution in both directions compared with full. The host's downsampling of the layer
// is part of the frame; it is timed separately and subtracted for the module's own ratio.
void halfFrame(benchmark::State& state) {
    const pbhost::Picture input = bench::makeNoise(bench::frameSize(state));
    ModuleFrame module(input);
    hostkit::World layer =
        hostkit::makeWorld(static_cast<int>(input.width), static_cast<int>(input.height),
                           static_cast<int>(pbhost::componentBytesOf(input.depth)));
    layer.data = input.pixels;
    hostkit::World half;
    hostkit::World full;
    hostkit::World downsampled;
    constexpr A_Ratio oneHalf = {1, 2};
    bench::PairedTiming timing({[&] {
                                    module.frame(half, {0, oneHalf, oneHalf, {}});
                                },
                                [&] { module.frame(full); },
                                [&] {
                                    downsampled = hostkit::downsampled(layer, {oneHalf, oneHalf});
                                }});
    timing.round();
    for ([[maybe_unused]] auto iteration : state)
        state.SetIterationTime(timing.round());
    state.counters["half_ms"] = timing.medianMilliseconds(0);
    state.counters["full_ms"] = timing.medianMilliseconds(1);
    state.counters["resample_ms"] = timing.medianMilliseconds(2);
    state.counters["ratio_full"] = timing.medianRatio(0, 1);
    state.counters["ratio_own"] = timing.medianRatio(0, 1) - timing.medianRatio(2, 1);
    for (const std::string& fault : hostkit::ledger::takeFaults())
        state.SkipWithError(fault.c_str());
}

BENCHMARK(halfFrame)->Apply(bench::applyFrameSizes);

} // namespace

int main(int argc, char** argv) {
    return bench::runWithOpenGl(argc, argv);
}
