// Two handwritten programs that compute the same picture as the engine for a chain of kernels, as
// references for its speed.
//
// `SameCallsProgram` makes the same OpenGL calls as the engine in the same order, without the
// engine's objects: it shows the cost of these objects. `FewestCallsProgram` keeps everything
// between frames, only uploads, draws and reads back, and lets OpenGL scale 16-bit values: it shows
// the cost of releasing all graphics memory after each frame.
//
// Both use the engine's generated shaders and pictures of one size and depth without row padding. A
// running command and the device's context must be current during their whole lifetime.
#pragma once

#include <vector>

#include "engine/pixels/render_texture.h"
#include "pbhost/pictures/picture.h"
#include "support/text.h"

namespace bench {

// The shaders of one pass, which reads the input `src` at pixel centres and has the uniform
// `tveg_gain`.
struct PassTexts {
    NarrowString vertex;
    NarrowString fragment;
};

class SameCallsProgram {
public:
    SameCallsProgram(const std::vector<PassTexts>& passes, float gain);

    void frame(const pbhost::Picture& input, pbhost::Picture& output);

private:
    struct Pass {
        GlProgram program;
        RenderTexture target;
    };

    void upload(const pbhost::Picture& input) const;
    void runPass(const Pass& pass, const RenderTexture& source,
                 const pbhost::Picture& output) const;
    void sendUniforms(const Pass& pass, const RenderTexture& source,
                      const pbhost::Picture& output) const;

    RenderTexture image_;
    std::vector<Pass> passes_;
    float gain_;
};

class FewestCallsProgram {
public:
    FewestCallsProgram(const std::vector<PassTexts>& passes, float gain,
                       const pbhost::Picture& format);

    void frame(const pbhost::Picture& input, pbhost::Picture& output) const;

private:
    RenderTexture image_;
    std::vector<RenderTexture> targets_; // one or two, used in turn
    std::vector<GlProgram> programs_;
};

} // namespace bench
