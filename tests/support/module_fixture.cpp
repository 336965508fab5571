#include "tests/support/module_fixture.h"

#include <gmock/gmock.h>

#include <fstream>

#include "hostkit/calls/ledger.h"
#include "hostkit/services/memory.h"

using namespace hostkit;

namespace {

constexpr int paddingPixels = 3;

} // namespace

ModuleTest::ModuleTest() {
    plugin.emplace(TVM_MODULE_PATH);
    EXPECT_EQ(plugin->setUp(), 0);
}

ModuleTest::~ModuleTest() {
    plugin.reset();
    EXPECT_EQ(memory::liveHandles(), 0U);
    EXPECT_THAT(ledger::outstanding(), testing::IsEmpty());
    EXPECT_THAT(ledger::takeFaults(), testing::IsEmpty());
}

std::string ModuleTest::write(const std::string& name, const std::string& bytes) {
    const std::filesystem::path path = folder / pathOf(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    EXPECT_TRUE(file.flush()) << path;
    return textOf(path);
}

Layer& ModuleTest::addPicture(int width, int height, int componentBytes) {
    host.project.componentBytes = componentBytes;
    World pixels = makeWorld(width, height, componentBytes, paddingPixels);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            setPixel(pixels, x, y, testPattern(static_cast<unsigned>(x), static_cast<unsigned>(y)));
    return comp.addLayer("layer", makeFootage("picture", std::move(pixels)));
}

Effect& ModuleTest::addEffect(Layer& layer) {
    return **layer.effects.insert(layer.effects.begin(), std::make_unique<Effect>(*plugin, layer));
}

Effect& ModuleTest::apply(Layer& layer, const std::string& path) {
    Effect& effect = addEffect(layer);
    host.scripts.answers.emplace_back(path);
    EXPECT_EQ(effect.apply(), 0);
    EXPECT_TRUE(host.scripts.answers.empty()) << "no file was requested";
    EXPECT_NE(effect.title(), "TVM:(Invalid PB)") << shown();
    return effect;
}

Effect& ModuleTest::applyKernel(Layer& layer, const std::string& text) {
    return apply(layer, write("kernel" + std::to_string(++kernels_) + ".pbk", text));
}

std::string ModuleTest::shown() const {
    std::string all;
    for (const InfoPanel::Lines& lines : host.infoPanel.messages())
        for (const std::string& line : lines)
            all += line + "\n";
    return all;
}
