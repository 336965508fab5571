// Two programs written by hand that make the same picture as the engine does of a chain of kernels.
//
// `SamePeer` makes the engine's OpenGL calls, all of them and in their order, without its objects:
// it shows what these cost. `BestPeer` keeps everything between frames and only uploads, draws and
// reads, and lets OpenGL scale 16 bits: it shows what holding no graphics memory costs.
//
// Both build their programs of the engine's texts, take pictures of one size and depth without
// padded rows, and need a running command and the device's context current from birth to death.
#pragma once

#include <vector>

#include "engine/render_texture.h"
#include "pbhost/pictures/picture.h"
#include "support/text.h"

namespace bench {

// One pass: reads the input `src` at pixel centres and has the uniform `tveg_gain`.
struct PassTexts {
    NarrowString vertex;
    NarrowString fragment;
};

class SamePeer {
public:
    SamePeer(const std::vector<PassTexts>& passes, float gain);

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

class BestPeer {
public:
    BestPeer(const std::vector<PassTexts>& passes, float gain, const pbhost::Picture& format);

    void frame(const pbhost::Picture& input, pbhost::Picture& output) const;

private:
    RenderTexture image_;
    std::vector<RenderTexture> targets_; // one or two, used in turn
    std::vector<GlProgram> programs_;
};

} // namespace bench
