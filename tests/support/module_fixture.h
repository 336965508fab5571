// A test of the effect's module as a host loads it: by its file, through its one function.
//
// There is a host with one composition of 4 by 4 pixels, and global setup is over when the test
// begins. When it has ended and the plug-in is gone, everything that was acquired must be released,
// and the host must have seen no misuse; otherwise the test fails.
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

    // A file in the test's own folder, which goes with the test; `name` may lie in folders. The
    // path, UTF-8.
    std::string write(const std::string& name, const std::string& bytes);

    // A layer with a picture of this depth, painted with testPattern; the project renders at it.
    hostkit::Layer& addPicture(int width = 4, int height = 4, int componentBytes = 1);

    // A new effect on top of the layer, to which no command was sent yet.
    hostkit::Effect& addEffect(hostkit::Layer& layer);

    // A new instance for which the user chooses that file; it must accept it.
    hostkit::Effect& apply(hostkit::Layer& layer, const std::string& path);
    // The same with a kernel of this text.
    hostkit::Effect& applyKernel(hostkit::Layer& layer, const std::string& text);

    // All lines that the Info panel got so far, each with its line end.
    std::string shown() const;

    const TemporaryFolder temporary;
    std::filesystem::path folder = temporary.path;
    hostkit::Host host;
    hostkit::Composition& comp = host.project.addComposition("comp", 4, 4);
    std::optional<hostkit::Plugin> plugin;

private:
    int kernels_ = 0;
};
