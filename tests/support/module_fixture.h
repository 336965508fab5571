// Fixture for tests of the module, loaded from its file through its entry function.
//
// Creates a host with one composition of 4 by 4 pixels and runs global setup. After the test the
// plug-in is destroyed; the test fails if anything is still acquired or the host recorded a fault.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/effect/effect.h"
#include "hostkit/host.h"
#include "hostkit/module/plugin.h"
#include "tests/support/engine_fixture.h"
#include "tests/support/temporary_folder.h"

class ModuleTest : public testing::Test {
protected:
    ModuleTest();
    ~ModuleTest() override;

    // Writes a file into the test's folder, which is removed afterwards; `name` may contain
    // folders. Returns the path, UTF-8.
    std::string write(const std::string& name, const std::string& bytes);

    // Adds a layer with a testPattern picture of this depth, which becomes the project's.
    hostkit::Layer& addPicture(int width = 4, int height = 4, int componentBytes = 1);

    // Adds an effect to the layer, without sending a command.
    hostkit::Effect& addEffect(hostkit::Layer& layer);

    // Adds an instance and chooses the file in its dialog; it must accept the file.
    hostkit::Effect& apply(hostkit::Layer& layer, const std::string& path);
    // The same for a file with this kernel.
    hostkit::Effect& applyKernel(hostkit::Layer& layer, const std::string& text);

    // All lines on the Info panel so far, each with a line end.
    std::string shown() const;

    const TemporaryFolder temporary;
    std::filesystem::path folder = temporary.path;
    hostkit::Host host;
    hostkit::Composition& comp = host.project.addComposition("comp", 4, 4);
    std::optional<hostkit::Plugin> plugin;

private:
    int kernels_ = 0;
};
