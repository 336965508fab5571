// The OpenGL steps that both kinds of node share: a texture with a framebuffer round it, its
// storage and its way back to host memory.
//
// All of it needs the device's context current, and works on texture unit 0.
#pragma once

#include <cstdint>

#include "engine/frame_description.h"
#include "gpu/gl_names.h"

// A texture that can be sampled and drawn into. Beyond its edge it reads as transparent black. It
// keeps its two names for life; between frames its storage is a single pixel.
struct RenderTexture {
    static RenderTexture create();

    void attach() const; // the framebuffer must be bound
    void setStorage(std::uint32_t width, std::uint32_t height, std::uint32_t componentBytes,
                    unsigned int format) const;
    void shrink() const;
    void clear() const; // to transparent black, at its present size

    GlTexture texture;
    GlFramebuffer framebuffer;
};

// A texture of one transparent pixel, for inputs that nothing feeds.
GlTexture makeTransparentTexture();

// The scale of all four channels on the way into or out of OpenGL: the host's 16-bit white is 32768
// where OpenGL's is 65535. Back to 1.0 in the destructor.
class ChannelScale {
public:
    explicit ChannelScale(float scale);
    ~ChannelScale();
    ChannelScale(const ChannelScale&) = delete;
    ChannelScale& operator=(const ChannelScale&) = delete;

private:
    bool isScaled_;
};

// What part of a framebuffer goes where in host memory.
struct PixelRead {
    std::int32_t x; // of the framebuffer, in pixels
    std::int32_t y;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t rowPixels;
    unsigned int format;
    unsigned int type;
    void* pixels;
    bool halve; // scale by 0.5
};

// Never writes outside rowPixels by height.
void readFramebuffer(const GlFramebuffer& framebuffer, const PixelRead& read);
