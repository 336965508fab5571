// The module in a process where it gets no OpenGL context. A program of its own, because drivers
// are searched for once in a process, and a window class is kept while it has a window.
#include <gmock/gmock.h>

#include "tests/support/module_fixture.h"
#ifdef _WIN32
#include "tests/support/taken_class.h"
#else
#include <cstdlib>
#endif

using namespace hostkit;
using testing::EndsWith;

namespace {

#ifdef _WIN32

// The module gets no window.
struct NoContext {
    NoContext() { takeWindowClass("AEGL_WindowDevice_Tvelmarondine"); }
};

#else

// There is no driver.
struct NoContext {
    NoContext() { setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent", 1); }
};

#endif

// The base that is first is constructed first, before the module is loaded.
class WithoutOpenGl : NoContext, public ModuleTest {};

} // namespace

TEST_F(WithoutOpenGl, ALoadFailsWithOneClearLine) {
    Layer& layer = addPicture();
    Effect& effect = addEffect(layer);
    host.scripts.answers = {"/nowhere.pbk"}; // reported before anything is built
    EXPECT_EQ(effect.apply(), 0);
    EXPECT_EQ(shown(), "Kernel file could not be opened:\n/nowhere.pbk\n\n\nNo error log\n");
    host.infoPanel.clear();
    host.scripts.answers = {
        write("copy.pbk", kernelText("", "dst = sampleNearest(src, outCoord());"))};
    EXPECT_EQ(effect.doDialog(), 0);
    EXPECT_EQ(shown(), "OpenGL can not be used, it lacks:\nan OpenGL context\n\n\nNo error log\n");
    EXPECT_EQ(effect.render({}).error, 0);
    EXPECT_EQ(plugin->about(), 0);
    EXPECT_THAT(shown(), EndsWith("OpenGL vendor  : \nOpenGL version : \nGLSL   version : \n"
                                  "\n\nNo error log\n"));
}
