#include "view/composition_camera.h"

#include <array>
#include <bit>
#include <cmath>

#include <GL/glew.h>
#include <GL/glu.h>

#include "host/composition.h"
#include "host/item.h"
#include "host/layer.h"
#include "view/matrices.h"

namespace {

using view::Matrix4;

constexpr double nearPlane = 1.0; // pixels in front of the eye
constexpr double farPlane = 32768.0;

struct Frame {
    double width; // pixels, as all lengths here
    double height;
    double pixelAspect; // width of a pixel divided by its height
};

Frame frameOf(SPBasicSuite* basic, AEGP_ItemH handle) {
    AEO::Item item(basic, handle);
    const A_Ratio aspect = item.pixelAspect();
    return {double(item.width()), double(item.height()), double(aspect.num) / aspect.den};
}

using Projection = decltype(&glFrustum); // with the calling convention of OpenGL

// Bottom and top are exchanged: y points up in eye space, but rows of the host go down. Returns
// false, with the matrix unchanged, for an empty window.
bool project(Projection projection, double halfWidth, double halfHeight) {
    if (!std::isfinite(halfWidth) || !std::isfinite(halfHeight) || halfWidth == 0 ||
        halfHeight == 0)
        return false;
    projection(-halfWidth, halfWidth, halfHeight, -halfHeight, nearPlane, farPlane);
    return true;
}

// The frame is the image plane, at that distance from the eye.
bool projectPerspective(const Frame& frame, double distance) {
    return project(glFrustum, frame.width * frame.pixelAspect / (2 * distance),
                   frame.height / (2 * distance));
}

bool projectOrthographic(const Frame& frame) {
    return project(glOrtho, frame.pixelAspect * frame.width / 2, frame.height / 2);
}

void loadDefaultView(const Frame& frame, double distance) {
    if (!projectPerspective(frame, distance))
        return;
    const double x = frame.width / 2;
    const double y = frame.height / 2;
    gluLookAt(x, y, -distance, x, y, 1 - distance, 0, -1, 0);
}

// From the world to the eye, which looks along -z with y up.
Matrix4 viewOf(const A_Matrix4& toWorld, const Frame& frame, bool isRigid) {
    auto matrix = std::bit_cast<Matrix4>(toWorld);
    const double middle = frame.width / 2;
    for (std::size_t row = 0; row < 3; ++row)
        matrix[row][0] *= frame.pixelAspect;
    matrix[3][0] = frame.pixelAspect * (matrix[3][0] - middle) + middle;
    matrix[1] = -matrix[1];
    matrix[2] = -matrix[2];
    return isRigid ? rigidInverse(matrix) : inverse(matrix);
}

void loadCameraView(const Frame& frame, AEO::CameraLayer& camera, const A_Time& time) {
    const double zoom = camera.zoom(AEGP_LTimeMode_CompTime, time, true);
    const A_Matrix4 toWorld = camera.toWorld(time);
    const AEGP_CameraType type = camera.cameraType();
    const bool isPerspective = type == AEGP_CameraType_PERSPECTIVE;
    if (!isPerspective && type != AEGP_CameraType_ORTHOGRAPHIC)
        return;
    if (!(isPerspective ? projectPerspective(frame, zoom) : projectOrthographic(frame)))
        return;
    // Only a parent can scale a camera. The pixel aspect ratio is not a scale here: inverted like a
    // rotation, it stretches the view by the same factor as the frame.
    const bool isRigid = isPerspective && camera.parent() == nullptr;
    const auto view = std::bit_cast<std::array<double, 16>>(viewOf(toWorld, frame, isRigid));
    // The rows are OpenGL's columns, because the host's points are row vectors.
    glMultMatrixd(view.data());
}

} // namespace

void loadCompositionCamera(const PF_InData* inData, AEGP_CompH composition,
                           AEO::Interface& interface, const A_Time& time) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    SPBasicSuite* basic = inData->pica_basicP;
    const AEGP_LayerH active = interface.camera(time);
    const Frame frame = frameOf(basic, AEO::Composition(basic, composition).item());
    AEO::CameraLayer camera(basic, active);
    if (active == nullptr)
        loadDefaultView(frame, camera.defaultDistance(composition));
    else
        loadCameraView(frame, camera, time);
}
