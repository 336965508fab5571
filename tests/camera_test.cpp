// The composition camera on real OpenGL: points of the composition are rendered and must set the
// pixel that was computed by hand. The viewport has the size of the composition.
#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "gpu/kgl_framebuffer.h"
#include "hostkit/effect/effect.h"
#include "pbhost/commands/camera_command.h"
#include "tests/support/comma_locale.h"
#include "tests/support/engine_fixture.h"
#include "view/composition_camera.h"

namespace {

using Point = std::array<double, 3>;
using Place = std::pair<int, int>; // column and row of a pixel, from the host's top left
using Matrix = std::array<double, 16>;

constexpr int width = 64;
constexpr int height = 48;
constexpr double zoom = 80;
constexpr Place nowhere{-1, -1};

class CameraTest : public EngineTest {
protected:
    CameraTest() {
        hostkit::addEffect(plugin, layer);
        comp.defaultCameraDistance = zoom;
        target->setSize(width, height, GL_FLOAT);
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target->getName());
        glViewport(0, 0, width, height);
    }

    hostkit::Layer& addCamera(const Point& position, const Point& rotation = {},
                              AEGP_CameraType type = AEGP_CameraType_PERSPECTIVE) {
        hostkit::Layer& camera = comp.addCamera("camera", zoom);
        camera.cameraType = type;
        place(camera, position, rotation);
        return camera;
    }

    static void set(hostkit::Layer& on, AEGP_LayerStream which, const Point& value) {
        on.stream(which)->constant.value.three_d = {value[0], value[1], value[2]};
    }
    static void place(hostkit::Layer& on, const Point& position, const Point& rotation) {
        set(on, AEGP_LayerStream_POSITION, position);
        set(on, AEGP_LayerStream_ROTATE_X, {rotation[0]});
        set(on, AEGP_LayerStream_ROTATE_Y, {rotation[1]});
        set(on, AEGP_LayerStream_ROTATION, {rotation[2]});
    }

    // The loaded projection matrix for row vectors.
    Matrix load(const A_Time& time = {0, 1}) {
        glMatrixMode(GL_MODELVIEW);
        AEO::Interface interface(host.inData()->pica_basicP,
                                 reinterpret_cast<PF_ProgPtr>(layer.effects[0].get()));
        loadCompositionCamera(host.inData(), reinterpret_cast<AEGP_CompH>(&comp), interface, time);
        GLint mode = 0;
        glGetIntegerv(GL_MATRIX_MODE, &mode);
        EXPECT_EQ(mode, GL_PROJECTION);
        Matrix matrix{};
        glGetDoublev(GL_PROJECTION_MATRIX, matrix.data());
        return matrix;
    }

    // The pixel set by a point of the composition.
    Place lit(const Point& point, const A_Time& time = {0, 1}) {
        load(time);
        glClear(GL_COLOR_BUFFER_BIT);
        glBegin(GL_POINTS);
        glVertex3dv(point.data());
        glEnd();
        std::array<float, width * height> reds{};
        glReadPixels(0, 0, width, height, GL_RED, GL_FLOAT, reds.data());
        const auto found = std::find(reds.begin(), reds.end(), 1.0F) - reds.begin();
        return found == width * height ? nowhere : Place(found % width, found / width);
    }

    hostkit::Plugin plugin{TVM_MODULE_PATH};
    hostkit::Composition& comp = host.project.addComposition("comp", width, height);
    hostkit::Layer& layer = comp.addLayer("layer", nullptr);
    std::unique_ptr<kglRenderTarget> target =
        makeObject<kglRenderTarget>(kglBufferKind::Texture, kglBufferKind::RenderBuffer);
};

TEST_F(CameraTest, TheDefaultViewFillsTheViewport) {
    const std::tuple<Point, Place> cases[] = {
        {{32.5, 24.5, 0}, {32, 24}},
        {{32.5, 30.5, 0}, {32, 30}}, // further down
        {{0.5, 0.5, 0}, {0, 0}},
        {{63.5, 0.5, 0}, {63, 0}},
        {{0.5, 47.5, 0}, {0, 47}},
        {{63.5, 47.5, 0}, {63, 47}},
        {{64.5, 24.5, 0}, nowhere},
        {{53, 9, 80}, {42, 16}}, // offset 21 and -15 from the centre, halved at twice the distance
        {{32.5, 24.5, 32640 - zoom}, {32, 24}},
        {{32.5, 24.5, 32900 - zoom}, nowhere}, // behind the far plane
        {{32.0125, 24.0125, 1.25 - zoom}, {32, 24}},
        {{32.0125, 24.0125, 0.75 - zoom}, nowhere}, // in front of the near plane
    };
    for (const auto& [point, place] : cases)
        EXPECT_EQ(lit(point), place) << point[0] << ", " << point[1] << ", " << point[2];
    comp.pixelAspect = {2, 1}; // twice the width of the world is visible
    for (const auto& [x, column] : {std::pair{32.5, 32}, {95.0, 63}, {-31.0, 0}, {97.0, -1}})
        EXPECT_EQ(lit({x, 24.5, 0}).first, column) << x;
}

// Every point is 10.5 to the right of the camera's axis and 7.5 above it, at the distance at which
// the zoom keeps sizes; multiplied where an aspect ratio or a scale divides it.
TEST_F(CameraTest, ProjectsPointsByPositionAndRotation) {
    constexpr AEGP_CameraType perspective = AEGP_CameraType_PERSPECTIVE;
    constexpr AEGP_CameraType orthographic = AEGP_CameraType_ORTHOGRAPHIC;
    const std::tuple<AEGP_CameraType, Point, A_long, double, Point> cases[] = {
        // kind, rotation, pixel aspect, the parent's scale (percent of x; 0: no parent), point
        {perspective, {0, 0, 0}, 1, 0, {52.5, 22.5, 40}},
        {perspective, {0, 90, 0}, 1, 0, {122, 22.5, -50.5}},  // looks along x; -z is right
        {perspective, {90, 0, 0}, 1, 0, {52.5, -50, -47.5}},  // along -y
        {perspective, {0, 0, 90}, 1, 0, {49.5, 40.5, 40}},    // +y is right, +x is up
        {perspective, {0, 90, 90}, 1, 0, {122, 40.5, -47.5}}, // about z first
        {perspective, {0, 0, 0}, 1, 200, {63, 22.5, 40}},     // half of 21
        {perspective, {0, 0, 0}, 2, 0, {62.5, 22.5, 40}},   // the eye is at x = 52; 21 divided by 2
        {perspective, {0, 0, 0}, 2, 100, {94, 22.5, 40}},   // 42 divided by 2 twice
        {orthographic, {0, 0, 0}, 1, 0, {52.5, 22.5, 900}}, // at any distance
        {orthographic, {0, 90, 0}, 1, 0, {122, 22.5, -50.5}},
        {orthographic, {0, 0, 0}, 2, 0, {94, 22.5, 900}},
        {orthographic, {0, 0, 0}, 1, 200, {63, 22.5, 40}},
    };
    hostkit::Layer& parent = comp.addLayer("parent", nullptr);
    place(parent, {}, {});
    for (const auto& each : cases) {
        const auto& [type, rotation, pixelAspect, parentScale, point] = each;
        comp.pixelAspect = {pixelAspect, 1};
        hostkit::Layer& camera = addCamera({42, 30, -40}, rotation, type);
        set(parent, AEGP_LayerStream_SCALE, {parentScale, 100, 100});
        set(camera, AEGP_LayerStream_POSITION, {parentScale == 200 ? 21.0 : 42, 30, -40});
        camera.parent = parentScale == 0 ? nullptr : &parent;
        EXPECT_EQ(lit(point), Place(42, 16)) << &each - cases;
        comp.layers.pop_back();
    }
}

TEST_F(CameraTest, IgnoresAnExpressionOnTheZoom) {
    hostkit::Stream& zooms = *addCamera({42, 30, -40}).stream(AEGP_LayerStream_ZOOM);
    zooms.expression = u"value / 2";
    zooms.isExpressionEnabled = true;
    EXPECT_EQ(zooms.withExpression(0).value.one_d, zoom / 2);
    EXPECT_EQ(lit({52.5, 22.5, 40}), Place(42, 16));
}

TEST_F(CameraTest, UsesTheActiveCameraOfTheTime) {
    hostkit::Layer& camera = addCamera({42, 30, -40});
    camera.inSeconds = 2;
    hostkit::Stream& zooms = *camera.stream(AEGP_LayerStream_ZOOM);
    for (const double seconds : {0, 2})
        zooms.keyframes[zooms.addKeyframe(seconds)].value.value.one_d = 40 + 40 * seconds;
    EXPECT_EQ(lit({52.5, 22.5, 40}, {1, 1}).first, 45); // the default camera: 20.5 times 120/80
    EXPECT_EQ(lit({52.5, 22.5, 40}, {3, 1}), Place(42, 16)); // 1 second in the camera's time
}

TEST_F(CameraTest, AParentMovesACameraAsItsOwnStreamsWould) {
    hostkit::Layer& parent = comp.addLayer("parent", nullptr);
    place(parent, {100, 50, 20}, {0, 0, 90});
    hostkit::Layer& camera = addCamera({10, -20, -60}, {0, 30, 0});
    camera.parent = &parent;
    const Matrix parented = load();
    camera.parent = nullptr;
    place(camera, {120, 60, -40}, {0, 30, 0}); // x became y, and y became -x
    set(camera, AEGP_LayerStream_ORIENTATION, {0, 0, 90});
    const Matrix alone = load();
    for (std::size_t i = 0; i < alone.size(); ++i)
        EXPECT_NEAR(parented[i], alone[i], 1e-4) << i;
    EXPECT_GT(std::abs(alone[1]), 1); // the camera is really rotated
}

TEST_F(CameraTest, AnInvalidCameraGivesTheIdentity) {
    const Matrix identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    comp.defaultCameraDistance = 0;
    EXPECT_EQ(load(), identity);
    hostkit::Layer& camera = addCamera({42, 30, -40}, {0, 30, 0});
    EXPECT_NE(load(), identity);
    set(camera, AEGP_LayerStream_ZOOM, {0});
    EXPECT_EQ(load(), identity);
    for (const auto& [type, den] : {std::pair{A_long{2}, 1U}, {AEGP_CameraType_ORTHOGRAPHIC, 0U}}) {
        camera.cameraType = type;
        comp.pixelAspect.den = den;
        EXPECT_EQ(load(), identity) << type;
    }
}

TEST(CameraCommand, WritesTheMatrixWithPointsInEveryLocale) {
    const CommaLocale comma;
    pbhost::CameraRequest request;
    request.module = TVM_MODULE_PATH;
    request.width = 64;
    request.height = 48;
    request.zoom = 64;
    // 1 / (64/64 / 2); 1 / (48/64 / 2); near and far plane; the eye at z = -64
    const std::string start = "2.000000 0.000000 0.000000 0.000000\n"
                              "0.000000 2.666667 0.000000 0.000000\n"
                              "0.000000 0.000000 1.000061 1.000000\n"
                              "-64.000000 -64.000000 62.00";
    EXPECT_EQ(pbhost::cameraProjection(request).substr(0, start.size()), start);
    request.kind = pbhost::CameraKind::Perspective;
    EXPECT_EQ(pbhost::cameraProjection(request).substr(0, start.size()), start);
    request.rotation[2] = 180;
    request.isJson = true;
    EXPECT_EQ(pbhost::cameraProjection(request).find("{\n  \"projection\": [\n"), 0U);
}

} // namespace
