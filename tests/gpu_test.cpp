// The device and the window system below it, with real contexts. The "host" here is a program that
// uses EGL on its own, as the process around the module does.
#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>

#include <GL/glew.h>
#include <GL/glu.h>
#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <gtest/gtest.h>

#include "gpu/device.h"
#include "gpu/features.h"
#include "gpu/gl_names.h"

namespace {

// What is current on this thread, as EGL itself says.
using Current = std::array<void*, 4>;
Current current() {
    return {eglGetCurrentDisplay(), eglGetCurrentSurface(EGL_DRAW), eglGetCurrentSurface(EGL_READ),
            eglGetCurrentContext()};
}
const Current nothing{};

// What the work writes to the debug output. No wish: the variable is not set.
template<class Work>
std::string debugOutputOf(const char* wish, Work work) {
    if (wish == nullptr)
        unsetenv("TVELMARONDINE_DEBUG");
    else
        setenv("TVELMARONDINE_DEBUG", wish, 1);
    testing::internal::CaptureStderr();
    work();
    unsetenv("TVELMARONDINE_DEBUG");
    return testing::internal::GetCapturedStderr();
}

// A context of the host's own, on any display and for any API, with two surfaces or none.
class HostContext {
public:
    HostContext(EGLDisplay onDisplay, EGLenum api, bool hasSurfaces) : display(onDisplay) {
        EXPECT_TRUE(eglInitialize(display, nullptr, nullptr));
        const EGLint kind = api == EGL_OPENGL_API ? EGL_OPENGL_BIT : EGL_OPENGL_ES2_BIT;
        const auto wish = std::to_array<EGLint>(
            {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, kind, EGL_NONE});
        EGLConfig config = nullptr;
        EGLint count = 0;
        EXPECT_TRUE(eglChooseConfig(display, wish.data(), &config, 1, &count));
        eglBindAPI(api);
        const auto version = std::to_array<EGLint>({EGL_CONTEXT_MAJOR_VERSION, 2, EGL_NONE});
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, version.data());
        for (EGLSurface& surface : surfaces)
            if (hasSurfaces)
                surface = eglCreatePbufferSurface(display, config, nullptr);
        makeCurrent();
    }
    ~HostContext() {
        eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(display, context);
        for (EGLSurface surface : surfaces)
            if (surface != EGL_NO_SURFACE)
                eglDestroySurface(display, surface);
        eglBindAPI(EGL_OPENGL_ES_API);
    }
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    void makeCurrent() const {
        EXPECT_TRUE(eglMakeCurrent(display, surfaces[0], surfaces[1], context));
    }
    Current all() const { return {display, surfaces[0], surfaces[1], context}; }

    static EGLDisplay onPlatform(EGLenum platform, void* native) {
        return eglGetPlatformDisplay(platform, native, nullptr);
    }
    static EGLDisplay surfaceless() {
        return onPlatform(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY);
    }
    static EGLDisplay onDevice() {
        const auto query =
            reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
        EGLDeviceEXT device = nullptr;
        EGLint count = 0;
        EXPECT_TRUE(query(1, &device, &count));
        return onPlatform(EGL_PLATFORM_DEVICE_EXT, device);
    }

private:
    EGLDisplay display;
    EGLContext context = EGL_NO_CONTEXT;
    std::array<EGLSurface, 2> surfaces{};
};

struct OwnedDevice : Device {
    OwnedDevice() { createDevice(glWindow, glDeviceContext, glRenderContext); }
    ~OwnedDevice() { destroyDevice(glWindow, glDeviceContext, glRenderContext); }
    OwnedDevice(const OwnedDevice&) = delete;
    OwnedDevice& operator=(const OwnedDevice&) = delete;
    bool isCurrent() const {
        return eglGetCurrentContext() == glRenderContext && wglGetCurrentContext() != nullptr &&
               wglGetCurrentDC() == glDeviceContext;
    }
};

class GpuTest : public testing::Test {
protected:
    GpuTest() { setDeviceName("Tvelmarondine"); }
    ~GpuTest() override { EXPECT_EQ(current(), nothing); }
};

TEST(PlatformTest, DebugOutputIsUtf8AndOnlyOnRequest) {
    const char16_t* text = u"a\u00e9\u4e2d\U0001F600 \xD800z\xDC00\xD83D";
    const auto write = [=] { OutputDebugStringW(text); };
    EXPECT_EQ(debugOutputOf(nullptr, write), "");
    EXPECT_EQ(debugOutputOf("", write), "");
    EXPECT_EQ(debugOutputOf("1", write), "a\u00e9\u4e2d\U0001F600 ?z??");
    EXPECT_EQ(debugOutputOf("1", [] { OutputDebugStringW(nullptr); }), "");
    const std::u16string longText(5000, u'\u4e2d');
    EXPECT_EQ(debugOutputOf("1", [&] { OutputDebugStringW(longText.c_str()); }).size(), 15000U);
}

TEST(PlatformTest, AClassLastsAsLongAsItsWindows) {
    std::string name = "PlatformTest";
    WNDCLASSEXA description{};
    description.cbSize = sizeof(description);
    description.style = CS_HREDRAW;
    description.lpszClassName = name.c_str();
    const auto makeWindow = [] {
        return CreateWindowExA(0, "PlatformTest", "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr,
                               nullptr);
    };
    EXPECT_EQ(makeWindow(), nullptr);
    EXPECT_NE(RegisterClassExA(&description), 0);
    EXPECT_EQ(RegisterClassExA(&description), 0);
    EXPECT_TRUE(UnregisterClassA("PlatformTest", nullptr));
    EXPECT_NE(RegisterClassExA(&description), 0);
    name = "changed by its owner";
    WNDCLASSEXA found{};
    EXPECT_TRUE(GetClassInfoExA(GetModuleHandleA(nullptr), "PlatformTest", &found));
    EXPECT_EQ(found.style, CS_HREDRAW);
    EXPECT_STREQ(found.lpszClassName, "PlatformTest");
    EXPECT_NE(makeWindow(), nullptr);
    EXPECT_FALSE(UnregisterClassA("PlatformTest", nullptr));
}

TEST_F(GpuTest, BadHandlesFailAndLeaveNothingCurrent) {
    const OwnedDevice device;
    const HDC good = device.glDeviceContext;
    auto* const strayDC = reinterpret_cast<HDC>(this);
    auto* const strayContext = reinterpret_cast<HGLRC>(this);
    const auto pairs = std::to_array<std::pair<HDC, HGLRC>>({{good, nullptr},
                                                             {nullptr, device.glRenderContext},
                                                             {strayDC, device.glRenderContext},
                                                             {good, strayContext}});
    for (const auto& [deviceContext, context] : pairs) {
        EXPECT_TRUE(wglMakeCurrent(good, device.glRenderContext));
        EXPECT_TRUE(device.isCurrent());
        EXPECT_FALSE(wglMakeCurrent(deviceContext, context));
        EXPECT_EQ(current(), nothing);
    }
    for (HDC bad : {HDC{}, strayDC}) {
        const PIXELFORMATDESCRIPTOR wish{};
        EXPECT_EQ(ChoosePixelFormat(bad, &wish), 0);
        EXPECT_FALSE(SetPixelFormat(bad, 1, &wish));
        EXPECT_EQ(wglCreateContext(bad), nullptr);
        EXPECT_EQ(ReleaseDC(device.glWindow, bad), 0);
    }
    EXPECT_FALSE(SetPixelFormat(good, 123456, nullptr));
    EXPECT_EQ(GetDC(nullptr), nullptr);
    EXPECT_FALSE(wglDeleteContext(strayContext));
}

TEST_F(GpuTest, ADeviceMayBeMadeAndEndedAgainAndAgain) {
    WNDCLASSEXA found{};
    for (int load = 0; load < 3; ++load) {
        Device device;
        createDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
        EXPECT_NE(device.glRenderContext, nullptr);
        EXPECT_TRUE(GetClassInfoExA(nullptr, "AEGL_WindowDevice_Tvelmarondine", &found));
        EXPECT_EQ(found.style, 3U);
        EXPECT_TRUE(wglMakeCurrent(device.glDeviceContext, device.glRenderContext));
        for (int end = 0; end < 2; ++end) {
            destroyDevice(device.glWindow, device.glDeviceContext, device.glRenderContext);
            EXPECT_EQ(current(), nothing);
        }
        EXPECT_FALSE(wglMakeCurrent(device.glDeviceContext, device.glRenderContext));
    }
}

TEST_F(GpuTest, ANameMustFitTheWindowClass) {
    for (const std::size_t length : {45, 46, 63, 70}) {
        const std::string name(length, 'n');
        setDeviceName(name.c_str());
        const OwnedDevice device;
        const bool fits = length <= 45;
        EXPECT_EQ(device.glWindow != nullptr, fits) << length;
        EXPECT_EQ(device.glDeviceContext != nullptr, fits) << length;
        EXPECT_EQ(device.glRenderContext != nullptr, fits) << length;
        const ContextSwitch inDevice(device);
        EXPECT_EQ(wglGetCurrentContext(), device.glRenderContext) << length;
    }
}

TEST_F(GpuTest, ASwitchGivesBackWhatTheHostHadCurrent) {
    struct Case {
        EGLDisplay display;
        EGLenum api;
        bool hasSurfaces;
    };
    const auto cases = std::to_array<Case>({{HostContext::surfaceless(), EGL_OPENGL_API, false},
                                            {HostContext::surfaceless(), EGL_OPENGL_API, true},
                                            {HostContext::surfaceless(), EGL_OPENGL_ES_API, true},
                                            {HostContext::onDevice(), EGL_OPENGL_API, false},
                                            {HostContext::onDevice(), EGL_OPENGL_ES_API, true}});
    for (const Case& c : cases) {
        const HostContext host(c.display, c.api, c.hasSurfaces);
        const OwnedDevice device;
        EXPECT_EQ(current(), nothing) << "after createDevice";
        EXPECT_EQ(eglQueryAPI(), c.api);
        host.makeCurrent();
        ContextSwitch outer(device);
        EXPECT_TRUE(device.isCurrent());
        {
            const HostContext callback(c.display, c.api, c.hasSurfaces);
            try {
                const ContextSwitch inner(device);
                EXPECT_TRUE(device.isCurrent());
                throw std::runtime_error("leaves the stretch");
            } catch (const std::runtime_error&) {
                EXPECT_EQ(current(), callback.all());
            }
        }
        outer.restore();
        EXPECT_EQ(current(), host.all());
        eglMakeCurrent(c.display, nullptr, nullptr, nullptr);
        outer.restore();
        EXPECT_EQ(current(), nothing) << "the second restore does nothing";
    }
}

// A quad over the left half of the target, by immediate mode and a shader of the old language.
TEST_F(GpuTest, TheContextRunsTheFixedPipelineAndOldShaders) {
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    glewInit();
    ASSERT_EQ(missingFeature(), nullptr);
    const GlTexture texture = GlTexture::create();
    glBindTexture(GL_TEXTURE_2D, texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, 2, 1, 0, GL_RGBA, GL_FLOAT, nullptr);
    const GlFramebuffer framebuffer = GlFramebuffer::create();
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer.get());
    glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D,
                              texture.get(), 0);
    const GlProgram program = GlProgram::create();
    const auto shaders = std::to_array<std::pair<GLenum, const char*>>(
        {{GL_VERTEX_SHADER, "varying vec4 c; void main() { c = gl_Vertex; "
                            "gl_Position = ftransform(); }"},
         {GL_FRAGMENT_SHADER, "varying vec4 c; void main() { gl_FragColor = "
                              "vec4(c.xy, -3.0, gl_FragCoord.x); }"}});
    for (const auto& [kind, text] : shaders) {
        const GLuint shader = glCreateShader(kind);
        glShaderSource(shader, 1, &text, nullptr);
        glCompileShader(shader);
        glAttachShader(program.get(), shader);
        glDeleteShader(shader);
    }
    glLinkProgram(program.get());
    glUseProgram(program.get());
    glClear(GL_COLOR_BUFFER_BIT);
    glViewport(0, 0, 2, 1);
    glMatrixMode(GL_PROJECTION);
    gluOrtho2D(0, 2, 0, 1);
    glBegin(GL_POLYGON);
    for (const auto& [x, y] : std::to_array<std::pair<int, int>>({{0, 0}, {0, 1}, {1, 1}, {1, 0}}))
        glVertex2d(x, y);
    glEnd();
    std::array<float, 8> pixels{};
    glReadPixels(0, 0, 2, 1, GL_RGBA, GL_FLOAT, pixels.data());
    EXPECT_EQ(pixels, (std::array<float, 8>{0.5F, 0.5F, -3, 0.5F, 0, 0, 0, 0}));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GpuTest, AMissingFeatureIsNamed) {
    EXPECT_STREQ(missingFeature(), "an OpenGL context");
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    glewInit();
    EXPECT_EQ(missingFeature(), nullptr);
    const auto shader = std::exchange(__glewCreateShader, nullptr);
    const auto matrix = std::exchange(__glewUniformMatrix3fv, nullptr);
    EXPECT_STREQ(missingFeature(), "glCreateShader");
    __glewCreateShader = shader;
    EXPECT_STREQ(missingFeature(), "glUniformMatrix3fv");
    __glewUniformMatrix3fv = matrix;
    const auto floats = std::exchange(__GLEW_ARB_texture_float, GLboolean{GL_FALSE});
    EXPECT_STREQ(missingFeature(), "GL_ARB_texture_float");
    __GLEW_ARB_texture_float = floats;
    EXPECT_EQ(missingFeature(), nullptr);
}

// Without any driver. The child process starts afresh, so that EGL looks for drivers anew.
TEST(DeviceDeathTest, WithoutADriverEverythingGoesOn) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto work = [] {
        setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nonexistent", 1);
        setDeviceName("Tvelmarondine");
        const OwnedDevice device;
        ContextSwitch inDevice(device);
        glewInit();
        const bool isNull = !device.glDeviceContext && !device.glRenderContext;
        const bool isNamed = std::string(missingFeature()) == "an OpenGL context";
        reportVersion();
        const bool isQuiet = reportError() == 0;
        inDevice.restore();
        return isNull && isNamed && isQuiet ? 0 : 1;
    };
    EXPECT_EXIT(std::exit(work()), testing::ExitedWithCode(0), "");
}

TEST_F(GpuTest, ReportsOnTheDebugOutput) {
    EXPECT_EQ(debugOutputOf("1", reportVersion), "OpenGL Version Infomation\n");
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    const auto text = [](GLenum name) {
        return std::string(reinterpret_cast<const char*>(glGetString(name)));
    };
    // One message of the debug output is cut at 1023 bytes, and the list of extensions is longer.
    const std::string extensions = ("Extentions : " + text(GL_EXTENSIONS) + "\n").substr(0, 1023);
    EXPECT_EQ(debugOutputOf("1", reportVersion),
              "OpenGL Version Infomation\nVendor   : " + text(GL_VENDOR) + "\nRenderer : " +
                  text(GL_RENDERER) + "\nVersion  : " + text(GL_VERSION) + "\n" + extensions);
    glEnable(GL_TEXTURE);
    EXPECT_EQ(debugOutputOf("1", [] { EXPECT_EQ(reportError(), GL_INVALID_ENUM); }),
              "OpenGL Error: invalid enumerant\n");
    EXPECT_EQ(debugOutputOf("1", [] { EXPECT_EQ(reportErrorAfter("100%d\n"), 0U); }),
              "100%d\nNo Error.\n");
}

// `use` makes a name known to OpenGL, which happens at its first use; `isName` asks OpenGL.
template<class Owner, class Use, class IsName>
void checkOwner(Use use, IsName isName) {
    GLuint kept = 0;
    {
        Owner first = Owner::create();
        Owner second = Owner::create();
        kept = first.get();
        const GLuint dropped = second.get();
        use(kept);
        use(dropped);
        second = std::move(first);
        EXPECT_EQ(first.get(), 0U); // NOLINT(*-use-after-move,*.Move)
        EXPECT_FALSE(isName(dropped));
        const Owner last(std::move(second));
        EXPECT_EQ(last.get(), kept);
        EXPECT_TRUE(isName(kept));
    }
    EXPECT_FALSE(isName(kept));
}

TEST_F(GpuTest, ANameIsDeletedByItsLastOwner) {
    const OwnedDevice device;
    const ContextSwitch inDevice(device);
    glewInit();
    checkOwner<GlTexture>([](GLuint name) { glBindTexture(GL_TEXTURE_2D, name); }, glIsTexture);
    checkOwner<GlFramebuffer>([](GLuint name) { glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, name); },
                              glIsFramebufferEXT);
    checkOwner<GlProgram>([](GLuint) {}, glIsProgram);
}

} // namespace
