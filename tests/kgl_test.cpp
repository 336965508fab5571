// The kgl objects on real OpenGL: storage, rendering into them, and deletion.
#include <GL/glew.h>

#include <array>
#include <utility>
#include <vector>

#include "gpu/kgl_framebuffer.h"
#include "tests/support/engine_fixture.h"

namespace {

using enum kglBufferKind;
using Numbers = std::vector<GLint>;

class KglTest : public EngineTest {};

// Width, height and internal format, as OpenGL reports them.
Numbers storageOf(const kglBufferObject& buffer) {
    Numbers found(3);
    if (glIsTexture(buffer.getName())) {
        glBindTexture(GL_TEXTURE_2D, buffer.getName());
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &found[0]);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &found[1]);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &found[2]);
        return found;
    }
    glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, buffer.getName());
    for (GLenum k = 0; k < 3; ++k) // the three enumerators are consecutive
        glGetRenderbufferParameterivEXT(GL_RENDERBUFFER_EXT, GL_RENDERBUFFER_WIDTH_EXT + k,
                                        &found[k]);
    return found;
}

struct Layer {
    int left, bottom, right, top; // pixels of a 4 by 3 target
    float z;                      // from -1 (near) to 1
    Pixel color;
};
// The first is the background; the nearest are not drawn last.
const auto layers = std::to_array<Layer>({{0, 0, 4, 3, 1, {0.1F, 0.2F, 0.3F, 0.7F}},
                                          {0, 0, 2, 3, -0.5F, {0.9F, 0, 0.01F, 1}},
                                          {1, 0, 4, 2, 0.25F, {0, 0.77F, 0, 0.5F}},
                                          {0, 1, 3, 3, 0, {0.33F, 0, 0.66F, 0}}});

void expectTheNearestLayersIn(const kglRenderTarget& target) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target.getName());
    ASSERT_EQ(glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), GL_FRAMEBUFFER_COMPLETE_EXT);
    glViewport(0, 0, 4, 3);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glClear(GL_DEPTH_BUFFER_BIT);
    for (const Layer& layer : layers) {
        glLoadIdentity();
        glTranslatef(-1, -1, layer.z);
        glScalef(2.0F / 4, 2.0F / 3, 1);
        glColor4fv(layer.color.data());
        glRecti(layer.left, layer.bottom, layer.right, layer.top);
    }
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            const Layer* nearest = layers.data();
            for (const Layer& layer : layers)
                if (layer.left <= x && x < layer.right && layer.bottom <= y && y < layer.top &&
                    layer.z < nearest->z)
                    nearest = &layer;
            Pixel pixel{};
            float depth = -1;
            glReadPixels(x, y, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
            glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
            for (std::size_t k = 0; k < 4; ++k)
                EXPECT_NEAR(pixel[k], nearest->color[k], 1e-6F) << x << ", " << y;
            EXPECT_NEAR(depth, (nearest->z + 1) / 2, 1e-4F) << x << ", " << y;
        }
}

TEST_F(KglTest, EachPairOfKindsRendersWithDepthAndDeletesItsNames) {
    for (const int pair : {0, 1, 2, 3}) {
        const auto color = pair < 2 ? Texture : RenderBuffer;
        const auto depth = pair % 2 == 0 ? Texture : RenderBuffer;
        auto target = makeObject<kglRenderTarget>(color, depth);
        const GLuint names[] = {target->getName(), target->getColorBuffer().getName(),
                                target->getDepthBuffer().getName()};
        EXPECT_EQ(storageOf(target->getColorBuffer()), Numbers({1, 1, GL_RGBA32F_ARB}));
        if (depth == Texture)
            static_cast<kglTextureBuffer&>(target->getDepthBuffer()).format = GL_DEPTH_COMPONENT;
        else
            EXPECT_EQ(storageOf(target->getDepthBuffer()), Numbers({1, 1, GL_DEPTH_COMPONENT}));
        target->setSize(4, 3, GL_FLOAT);
        EXPECT_EQ(storageOf(target->getColorBuffer()), Numbers({4, 3, GL_RGBA32F_ARB}));
        EXPECT_EQ(storageOf(target->getDepthBuffer()), Numbers({4, 3, GL_DEPTH_COMPONENT}));
        expectTheNearestLayersIn(*target);
        EXPECT_EQ(glGetError(), 0U);
        target.reset();
        for (const GLuint name : {names[1], names[2]})
            EXPECT_FALSE(glIsTexture(name) || glIsRenderbufferEXT(name));
        EXPECT_FALSE(glIsFramebufferEXT(names[0]));
    }
}

TEST_F(KglTest, BuffersTakeTheFormatsOfTheTarget) {
    const auto bare = makeObject<kglTextureBuffer>(GL_TEXTURE_2D);
    EXPECT_EQ(Numbers({bare->internalFormat, int(bare->format), int(bare->type)}),
              Numbers({GL_RGBA32F_ARB, GL_RGBA, GL_UNSIGNED_BYTE}));
    const auto storage = makeObject<kglRenderBuffer>();
    storage->setSize(2, 1);
    EXPECT_EQ(storageOf(*storage), Numbers({2, 1, GL_RGBA}));

    const auto target = makeObject<kglRenderTarget>(Texture, Texture);
    const auto& color = static_cast<const kglTextureBuffer&>(target->getColorBuffer());
    const auto& depth = static_cast<const kglTextureBuffer&>(target->getDepthBuffer());
    EXPECT_EQ(Numbers({int(color.type), int(depth.type)}), Numbers({GL_UNSIGNED_BYTE, GL_FLOAT}));
    EXPECT_EQ(depth.internalFormat, GL_DEPTH_COMPONENT);
    const std::pair<GLenum, GLint> parameters[] = {{GL_TEXTURE_WRAP_S, GL_CLAMP},
                                                   {GL_TEXTURE_WRAP_T, GL_CLAMP},
                                                   {GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                                   {GL_TEXTURE_MAG_FILTER, GL_LINEAR}};
    glBindTexture(GL_TEXTURE_2D, color.getName());
    for (const auto& [parameter, wanted] : parameters) {
        GLint found = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, parameter, &found);
        EXPECT_EQ(found, wanted) << parameter;
    }
    target->setSize(2, 2, GL_SHORT);
    EXPECT_EQ(Numbers({int(color.type), int(depth.type)}), Numbers({GL_SHORT, GL_SHORT}));
}

Numbers deleted;
PFNGLDELETERENDERBUFFERSEXTPROC really = nullptr;

void GLAPIENTRY recordDeletion(GLsizei count, const GLuint* names) {
    deleted.insert(deleted.end(), names, names + count);
    really(count, names);
}

TEST_F(KglTest, ColourIsDeletedBeforeDepth) {
    deleted.clear();
    auto target = makeObject<kglRenderTarget>(RenderBuffer, RenderBuffer);
    const Numbers expected{int(target->getColorBuffer().getName()),
                           int(target->getDepthBuffer().getName())};
    really = std::exchange(__glewDeleteRenderbuffersEXT, recordDeletion);
    target.reset();
    __glewDeleteRenderbuffersEXT = really;
    EXPECT_EQ(deleted, expected);
}

TEST_F(KglTest, RendersIntoEachLayerOfA3DTexture) {
    const auto block = makeObject<kglTextureBuffer>(GL_TEXTURE_3D);
    block->setSize(1, 1);
    std::array<float, 2> reds{};
    glTexImage3D(GL_TEXTURE_3D, 0, GL_RGBA, 1, 1, 2, 0, GL_RED, GL_FLOAT, reds.data());
    block->zOffset = 1;
    const auto framebuffer = makeObject<kglFrameBuffer>();
    block->attachTo(*framebuffer, GL_COLOR_ATTACHMENT0_EXT);
    framebuffer->setSize(8, 8, GL_FLOAT);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, framebuffer->getName());
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glGetTexImage(GL_TEXTURE_3D, 0, GL_RED, GL_FLOAT, reds.data());
    EXPECT_EQ(reds, (std::array<float, 2>{0, 1}));
    EXPECT_EQ(glGetError(), 0U);
}

TEST_F(KglTest, WithoutMemoryNoNameIsLeft) {
    const auto work = [] { makeObject<kglRenderTarget>(Texture, Texture); };
    EXPECT_EQ(failEveryAllocation(work), 3U);
    for (GLuint name = 1; name < 99; ++name)
        EXPECT_FALSE(glIsTexture(name) || glIsFramebufferEXT(name)) << name;
}

} // namespace
