// Renders kernels and graphs with a module, for the comparison of two platforms' modules.
//
// render_all MODULE OUT BLOCKS FILE...
//
// Writes into OUT for each FILE and each of the depths 8, 16 and 32: NAME.DEPTH, the pixels of a
// frame without padding; NAME.DEPTH.block, the effect's flat block; NAME.DEPTH.values, the values
// of its controls. If BLOCKS is a folder of such files (not "-"), the instances are opened from
// these blocks, at 16 bits from the same block in the old format, and a file that is not at the
// stored path is searched for in the folders of the FILEs.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "hostkit/calls/ledger.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/plugin.h"

namespace fs = std::filesystem;
using namespace hostkit;

namespace {

// The size of the rendered frames, and by how much the layer is larger: some kernels draw nothing
// near the corner of their frame.
constexpr int width = 60;
constexpr int height = 40;
int scaleAt(int componentBytes) {
    return componentBytes == 1 ? 1 : 8;
}

void writeFile(const fs::path& path, const void* bytes, std::size_t size) {
    std::ofstream file(path, std::ios::binary);
    file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    if (!file.flush())
        throw std::runtime_error(path.string() + " cannot be written");
}

std::vector<std::byte> readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error(path.string() + " cannot be read");
    const std::string all{std::istreambuf_iterator<char>(file), {}};
    const auto* first = reinterpret_cast<const std::byte*>(all.data());
    return {first, first + all.size()};
}

void setChannel(World& world, std::size_t at, int value) {
    if (world.componentBytes == 1)
        world.data[at] = static_cast<std::byte>(value);
    else if (world.componentBytes == 2)
        reinterpret_cast<std::uint16_t*>(world.data.data())[at] =
            static_cast<std::uint16_t>(value * 32768 / 255);
    else
        reinterpret_cast<float*>(world.data.data())[at] = static_cast<float>(value) / 255.0F;
}

// A smooth area and a rough one; opaque on the left, fading out to the right.
World picture(const Composition& comp, int componentBytes, int seed) {
    World world = makeWorld(comp.width, comp.height, componentBytes);
    for (int y = 0; y < comp.height; ++y)
        for (int x = 0; x < comp.width; ++x)
            for (int k = 0; k < 4; ++k) {
                const int alpha = std::min(255, 510 - 510 * x / comp.width);
                const int color =
                    (x * (2 + k) + y * (5 - k) + seed * 83 + (x / 7 * y / 5) % 11) % 256;
                const auto at =
                    static_cast<std::size_t>(y * comp.width + x) * 4 + static_cast<std::size_t>(k);
                setChannel(world, at, k == 0 ? alpha : color);
            }
    return world;
}

std::vector<std::byte> pixelsOf(const World& world) {
    const int rowBytes = world.width * world.pixelBytes();
    std::vector<std::byte> bytes;
    for (int y = 0; y < world.height; ++y) {
        const auto row = world.data.begin() + y * world.rowBytes;
        bytes.insert(bytes.end(), row, row + rowBytes);
    }
    return bytes;
}

std::vector<AEGP_StreamVal2> valuesOf(Effect& effect) {
    std::vector<AEGP_StreamVal2> values;
    for (std::size_t control = 1; control < effect.definitions.size(); ++control)
        values.push_back(effect.control(control).constant.value);
    return values;
}

// The same block as projects of old stored it: version 0, and the path directly after it.
std::vector<std::byte> inOldFormat(const std::vector<std::byte>& block) {
    std::vector<std::byte> old(block.begin() + 4, block.end());
    std::fill_n(old.begin(), 4, std::byte{0});
    return old;
}

void open(Effect& effect, const fs::path& stored, bool isOldFormat) {
    const std::vector<std::byte> bytes = readFile(stored.string() + ".values");
    const auto fillStreams = [&bytes](Effect& opened) {
        for (std::size_t control = 1; control < opened.definitions.size(); ++control)
            std::memcpy(&opened.control(control).constant.value,
                        &bytes.at((control - 1) * sizeof(AEGP_StreamVal2)),
                        sizeof(AEGP_StreamVal2));
    };
    const std::vector<std::byte> block = readFile(stored.string() + ".block");
    if (effect.open(isOldFormat ? inOldFormat(block) : block, fillStreams) != 0)
        throw std::runtime_error(stored.string() + ": cannot be opened");
}

// Moves the sliders a little away from the kernel's defaults, which an opened effect could have by
// itself.
void moveSliders(Effect& effect) {
    for (std::size_t control = 1; control < effect.definitions.size(); ++control) {
        const PF_ParamDef& definition = effect.definitions[control];
        Stream& stream = effect.control(control);
        if (definition.param_type == PF_Param_FIX_SLIDER && !stream.isHidden()) {
            const NumberRange range = *kindOf(definition).range(definition.u);
            double& value = stream.constant.value.one_d;
            // Mostly down, because a larger value often needs more time.
            value += 0.03 * ((value > range.low ? range.low : range.high) - value);
        }
    }
}

// The path of the pixels; block and values have further extensions.
fs::path resultOf(const fs::path& folder, const fs::path& file, int componentBytes) {
    return folder / (file.filename().string() + "." + std::to_string(8 * componentBytes));
}

void start(Effect& effect, const fs::path& file, const std::string& blocks) {
    if (blocks != "-")
        return open(effect, resultOf(blocks, file, effect.componentBytes()),
                    effect.componentBytes() == 2);
    Host::current().scripts.answers = {file.string()};
    if (effect.apply() != 0)
        throw std::runtime_error(file.string() + ": cannot be applied");
    moveSliders(effect);
}

void renderOne(Plugin& plugin, const fs::path& file, const fs::path& out,
               const std::string& blocks) {
    for (const int componentBytes : {1, 2, 4}) {
        Project& project = Host::current().project;
        project.componentBytes = componentBytes;
        const int scale = scaleAt(componentBytes);
        Composition& comp = project.addComposition("comp", width * scale, height * scale);
        Layer& other =
            comp.addLayer("other", makeFootage("other", picture(comp, componentBytes, 1)));
        Layer& layer =
            comp.addLayer("layer", makeFootage("picture", picture(comp, componentBytes, 0)));
        Effect& effect = addEffect(plugin, layer);
        start(effect, file, blocks);
        if (effect.title() == "TVM:(Invalid PB)")
            throw std::runtime_error(file.string() + ": not loaded");
        for (const std::size_t control : {1, 2, 3})
            effect.control(control).constant.value.layer_id = other.id;
        RenderRequest request;
        request.seconds = 0.5;
        request.downsampleX = request.downsampleY = {1, static_cast<A_u_long>(scale)};
        const RenderResult result = effect.render(request);
        if (result.error != 0)
            throw std::runtime_error(file.string() + ": error " + std::to_string(result.error));
        const std::vector<std::byte> pixels = pixelsOf(result.output);
        const std::string name = resultOf(out, file, componentBytes).string();
        writeFile(name, pixels.data(), pixels.size());
        const std::vector<std::byte> block = effect.save();
        writeFile(name + ".block", block.data(), block.size());
        const std::vector<AEGP_StreamVal2> values = valuesOf(effect);
        writeFile(name + ".values", values.data(), values.size() * sizeof(values[0]));
        layer.effects.clear();
    }
}

void renderAll(const std::vector<std::string>& arguments) {
    Host host;
    Plugin plugin{fs::path(arguments[0])};
    if (plugin.setUp() != 0)
        throw std::runtime_error(arguments[0] + ": global setup failed");
    for (std::size_t i = 3; i < arguments.size(); ++i) {
        const fs::path file = fs::absolute(arguments[i]).make_preferred();
        host.preferences.set("Settings_cs_TVM_Launcher", "rootFolder", file.parent_path().string());
        renderOne(plugin, file, arguments[1], arguments[2]);
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 4) {
        std::fputs("usage: render_all MODULE OUT BLOCKS FILE...\n", stderr);
        return 2;
    }
    try {
        renderAll(arguments);
        for (const std::string& fault : ledger::takeFaults())
            throw std::runtime_error(fault);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "render_all: %s\n", error.what());
        return 1;
    }
}
