// The device and the window system below it, with real contexts. "Host" here means a program that
// uses OpenGL itself, like the process that loads the module.
#include <string>
#include <utility>

#include <GL/glew.h>
#include <gtest/gtest.h>

#include "gpu/device.h"
#include "gpu/features.h"
#include "gpu/gl_names.h"
#include "tests/support/debug_output.h"
#include "tests/support/host_context.h"
#ifdef _WIN32
#include "tests/support/taken_class.h"
#endif

namespace {

struct OwnedDevice : OwnDevice {
    OwnedDevice() : OwnDevice("Tvelmarondine") {}
    bool isCurrent() const {
        return wglGetCurrentContext() == glRenderContext && glRenderContext != nullptr &&
               wglGetCurrentDC() == glDeviceContext && currentContext() != CurrentContext{};
    }
};

class GpuTest : public testing::Test {
protected:
    GpuTest() { setDeviceName("Tvelmarondine"); }
    ~GpuTest() override { EXPECT_EQ(currentContext(), CurrentContext{}); }
};

TEST_F(GpuTest, ADeviceCanBeCreatedRepeatedly) {
    for (int load = 0; load < 3; ++load) {
        Device device;
        createDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
        EXPECT_NE(device.glRenderContext, nullptr);
        EXPECT_TRUE(wglMakeCurrent(device.glDeviceContext, device.glRenderContext));
        for (int end = 0; end < 2; ++end) {
            destroyDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
            EXPECT_EQ(currentContext(), CurrentContext{});
        }
        EXPECT_FALSE(wglMakeCurrent(device.glDeviceContext, device.glRenderContext));
#ifndef _WIN32 // Wine still accepts a window's device context that was released
        EXPECT_EQ(wglCreateContext(device.glDeviceContext), nullptr) << "it was not released";
#endif
    }
}

// The class name is limited to 64 bytes, 18 of them before the device's name.
TEST_F(GpuTest, ATooLongNameCreatesNoDevice) {
    for (const std::size_t length : {45U, 46U, 47U, 63U, 70U}) {
        const std::string name(length, 'n');
        setDeviceName(name.c_str());
        Device device;
        createDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
        EXPECT_EQ(device.glWindow != nullptr, length == 45) << length;
        EXPECT_EQ(device.glRenderContext != nullptr, length == 45) << length;
        WNDCLASSEXA found{};
        const std::string className = "AEGL_WindowDevice_" + name;
        EXPECT_EQ(GetClassInfoExA(GetModuleHandleA(nullptr), className.c_str(), &found) != FALSE,
                  length == 45);
        destroyDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
    }
}

TEST_F(GpuTest, ASwitchRestoresTheHostsContext) {
    for (const HostKind& kind : hostKinds()) {
        const HostContext host(kind);
        const OwnedDevice device;
        EXPECT_EQ(currentContext(), CurrentContext{}) << "after createDevice";
        EXPECT_TRUE(host.isApiBound());
        host.makeCurrent();
        ContextSwitch outer(device);
        EXPECT_TRUE(device.isCurrent());
        {
            const HostContext callback(kind);
            {
                const ContextSwitch inner(device);
                EXPECT_TRUE(device.isCurrent());
            }
            EXPECT_EQ(currentContext(), callback.all);
        }
        outer.restore();
        EXPECT_EQ(currentContext(), host.all);
        host.release();
        outer.restore();
        EXPECT_EQ(currentContext(), CurrentContext{}) << "the second restore does nothing";
    }
}

TEST_F(GpuTest, NamesAMissingFeature) {
    EXPECT_STREQ(missingFeature(), "an OpenGL context");
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    glewInit();
    EXPECT_EQ(missingFeature(), nullptr);
    const auto matrix = std::exchange(__glewUniformMatrix3fv, nullptr);
    EXPECT_STREQ(missingFeature(), "glUniformMatrix3fv");
    __glewUniformMatrix3fv = matrix;
    const auto floats = std::exchange(__GLEW_ARB_texture_float, GLboolean{GL_FALSE});
    EXPECT_STREQ(missingFeature(), "GL_ARB_texture_float");
    __GLEW_ARB_texture_float = floats;
}

#ifdef _WIN32 // on Linux a window and its pixel format need no system resource

TEST_F(GpuTest, WithoutAWindowADeviceHasNoContext) {
    const char* name = "AEGL_WindowDevice_Refused";
    takeWindowClass(name);
    {
        const OwnDevice device("Refused");
        const ContextSwitch inDevice(device);
        glewInit();
        EXPECT_TRUE(device.glWindow == nullptr && device.glRenderContext == nullptr);
        EXPECT_STREQ(missingFeature(), "an OpenGL context");
    }
    WNDCLASSEXA found{};
    EXPECT_FALSE(GetClassInfoExA(GetModuleHandleA(nullptr), name, &found));
}

// The address through which this program calls the system's function.
extern "C" decltype(&ChoosePixelFormat) importedChoosePixelFormat asm(
#ifdef _WIN64
    "__imp_ChoosePixelFormat"
#else
    "__imp__ChoosePixelFormat@8"
#endif
);

int WINAPI chooseNoFormat(HDC, const PIXELFORMATDESCRIPTOR*) {
    return 0;
}

TEST_F(GpuTest, WithoutAPixelFormatADeviceHasNoContext) {
    const auto real = std::exchange(importedChoosePixelFormat, chooseNoFormat);
    {
        const OwnedDevice device;
        const ContextSwitch inDevice(device);
        glewInit();
        EXPECT_TRUE(device.glWindow != nullptr && device.glDeviceContext != nullptr);
        EXPECT_EQ(device.glRenderContext, nullptr);
        EXPECT_STREQ(missingFeature(), "an OpenGL context");
    }
    importedChoosePixelFormat = real;
    EXPECT_NE(OwnedDevice().glRenderContext, nullptr);
}

#endif

TEST_F(GpuTest, ReportsOnTheDebugOutputAndOnlyOnRequest) {
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    const auto text = [](GLenum name) {
        return std::string(reinterpret_cast<const char*>(glGetString(name)));
    };
    // A message of the debug output is cut at 1023 bytes, and the list of extensions is longer.
    const std::string extensions = ("Extentions : " + text(GL_EXTENSIONS) + "\n").substr(0, 1023);
    EXPECT_EQ(debugOutputOf(reportVersion),
              "OpenGL Version Infomation\nVendor   : " + text(GL_VENDOR) + "\nRenderer : " +
                  text(GL_RENDERER) + "\nVersion  : " + text(GL_VERSION) + "\n" + extensions);
    glEnable(GL_TEXTURE);
    EXPECT_EQ(debugOutputOf([] { EXPECT_EQ(reportError(), GL_INVALID_ENUM); }),
              "OpenGL Error: invalid enumerant\n");
    EXPECT_EQ(debugOutputOf([] { EXPECT_EQ(reportErrorAfter("100%d\n"), 0U); }),
              "100%d\nNo Error.\n");
}

} // namespace
