#include "bench/reference_programs.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <algorithm>
#include <array>

#include "engine/pixels/channel_scale.h"
#include "engine/pixels/pixel_format.h"
#include "engine/program/program_builder.h"

namespace bench {

namespace {

using pbhost::Depth;
using pbhost::Picture;

const DepthFormat& formatOf(const Picture& picture) {
    return depthFormat(pbhost::componentBytesOf(picture.depth));
}

void scaleChannels(const Picture& picture, float scale) {
    if (picture.depth != Depth::Bits16)
        return;
    for (const GLenum channel : {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE})
        glPixelTransferf(channel, scale);
}

void specifyStorage(const RenderTexture& target, const Picture& picture, GLenum format) {
    const DepthFormat& depth = formatOf(picture);
    glBindTexture(GL_TEXTURE_2D, target.texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, depth.internalFormat, static_cast<GLsizei>(picture.width),
                 static_cast<GLsizei>(picture.height), 0, format, depth.type, nullptr);
}

void shrinkStorage(const RenderTexture& target) {
    glBindTexture(GL_TEXTURE_2D, target.texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_BGRA, GL_UNSIGNED_BYTE, nullptr);
}

void setFilter(const RenderTexture& target, GLint filter) {
    glBindTexture(GL_TEXTURE_2D, target.texture.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
}

void sendRows(const Picture& input, unsigned first, unsigned count, const void* pixels) {
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, static_cast<GLint>(first),
                    static_cast<GLsizei>(input.width), static_cast<GLsizei>(count), GL_RGBA,
                    formatOf(input).type, pixels);
}

void sendPixels(const Picture& input) {
    sendRows(input, 0, input.height, input.pixels.data());
}

// In blocks of at most 64 KB, as the engine does; a block must hold at least one row.
void sendDoubled(const Picture& input) {
    std::array<std::uint16_t, 1 << 15> staging;
    const std::size_t rowChannels = std::size_t{input.width} * pbhost::channelsPerPixel;
    const auto rows = static_cast<unsigned>(staging.size() / rowChannels);
    for (unsigned y = 0; y < input.height; y += rows) {
        const unsigned count = std::min(rows, input.height - y);
        doubleChannels(reinterpret_cast<const std::uint16_t*>(input.row(y)), staging.data(),
                       count * rowChannels);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(input.width));
        sendRows(input, y, count, staging.data());
    }
}

void readPixels(Picture& output) {
    glReadPixels(0, 0, static_cast<GLsizei>(output.width), static_cast<GLsizei>(output.height),
                 GL_RGBA, formatOf(output).type, output.pixels.data());
}

void setMatrices(const Picture& output) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluOrtho2D(0, output.width, 0, output.height);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

void drawQuad(const Picture& output) {
    glBegin(GL_POLYGON);
    glVertex2d(0, 0);
    glVertex2d(0, output.height);
    glVertex2d(output.width, output.height);
    glVertex2d(output.width, 0);
    glEnd();
}

} // namespace

SameCallsProgram::SameCallsProgram(const std::vector<PassTexts>& passes, float gain)
    : image_(RenderTexture::create()), gain_(gain) {
    for (const PassTexts& texts : passes)
        passes_.push_back(
            {buildProgram("same", texts.vertex, texts.fragment), RenderTexture::create()});
}

void SameCallsProgram::upload(const Picture& input) const {
    specifyStorage(image_, input, GL_RGBA);
    if (input.depth == Depth::Bits16)
        return sendDoubled(input);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(input.width));
    sendPixels(input);
}

void SameCallsProgram::sendUniforms(const Pass& pass, const RenderTexture& source,
                                    const Picture& output) const {
    const GLuint program = pass.program.get();
    glUniform2f(glGetUniformLocation(program, "tvek_outputPixelSize"), 1, 1);
    glUniform2f(glGetUniformLocation(program, "tvek_compSize"), static_cast<float>(output.width),
                static_cast<float>(output.height));
    glUniform2f(glGetUniformLocation(program, "tvek_downsamplingRate"), 1, 1);
    glUniform1f(glGetUniformLocation(program, "tveg_gain"), gain_);
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, source.texture.get());
    glUniform1i(glGetUniformLocation(program, "src"), 1);
    glActiveTexture(GL_TEXTURE0);
    constexpr std::array<float, 2> pixelSize = {1, 1};
    glUniform2fv(glGetUniformLocation(program, "tvek_texturePixelSize"), 1, pixelSize.data());
}

void SameCallsProgram::runPass(const Pass& pass, const RenderTexture& source,
                               const Picture& output) const {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, pass.target.framebuffer.get());
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glUseProgram(pass.program.get());
    sendUniforms(pass, source, output);
    setFilter(source, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, pass.target.texture.get());
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_LIGHTING);
    glViewport(0, 0, static_cast<GLsizei>(output.width), static_cast<GLsizei>(output.height));
    setMatrices(output);
    glColor4d(1, 1, 1, 1);
    drawQuad(output);
    glFlush();
    setFilter(source, GL_LINEAR);
    glUseProgram(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
}

// Each pass draws into the texture that the previous pass read, the first one into its own.
void SameCallsProgram::frame(const Picture& input, Picture& output) {
    upload(input);
    RenderTexture* source = &image_;
    RenderTexture* spare = nullptr;
    for (Pass& pass : passes_) {
        if (spare != nullptr)
            std::swap(pass.target, *spare);
        else
            specifyStorage(pass.target, output, GL_BGRA);
        runPass(pass, *source, output);
        spare = source;
        source = &pass.target;
    }
    glUseProgram(passes_.back().program.get());
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, source->framebuffer.get());
    glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glReadBuffer(GL_COLOR_ATTACHMENT0_EXT);
    glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(output.width));
    readPixels(output);
    if (output.depth == Depth::Bits16)
        halveChannels(reinterpret_cast<std::uint16_t*>(output.pixels.data()),
                      output.pixels.size() / sizeof(std::uint16_t));
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glUseProgram(0);
    if (spare != nullptr)
        shrinkStorage(*spare);
    shrinkStorage(*source);
}

FewestCallsProgram::FewestCallsProgram(const std::vector<PassTexts>& passes, float gain,
                                       const Picture& format)
    : image_(RenderTexture::create()) {
    specifyStorage(image_, format, GL_RGBA);
    setFilter(image_, GL_NEAREST);
    for (std::size_t i = 0; i < std::min<std::size_t>(passes.size(), 2); ++i) {
        targets_.push_back(RenderTexture::create());
        specifyStorage(targets_[i], format, GL_BGRA);
        setFilter(targets_[i], GL_NEAREST);
    }
    for (const PassTexts& texts : passes) {
        programs_.push_back(buildProgram("best", texts.vertex, texts.fragment));
        const GLuint program = programs_.back().get();
        glUseProgram(program);
        glUniform2f(glGetUniformLocation(program, "tvek_compSize"),
                    static_cast<float>(format.width), static_cast<float>(format.height));
        glUniform2f(glGetUniformLocation(program, "tvek_downsamplingRate"), 1, 1);
        glUniform1f(glGetUniformLocation(program, "tveg_gain"), gain);
        glUniform1i(glGetUniformLocation(program, "src"), 1);
    }
    glUseProgram(0);
    glViewport(0, 0, static_cast<GLsizei>(format.width), static_cast<GLsizei>(format.height));
    setMatrices(format);
}

// Viewport, matrices and row lengths need not be set: the engine and the other program set the
// same.
void FewestCallsProgram::frame(const Picture& input, Picture& output) const {
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, image_.texture.get());
    scaleChannels(input, 2.0F);
    sendPixels(input);
    scaleChannels(input, 1.0F);
    for (std::size_t i = 0; i < programs_.size(); ++i) {
        const RenderTexture& target = targets_[i % targets_.size()];
        if (i > 0)
            glBindTexture(GL_TEXTURE_2D, targets_[(i - 1) % targets_.size()].texture.get());
        glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, target.framebuffer.get());
        glUseProgram(programs_[i].get());
        drawQuad(output);
    }
    scaleChannels(output, 0.5F);
    readPixels(output);
    scaleChannels(output, 1.0F);
    glUseProgram(0);
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glActiveTexture(GL_TEXTURE0);
}

} // namespace bench
