// Shared by both kinds of node: a texture with a framebuffer, its storage, and reading it back to
// host memory.
//
// Everything needs the device's context current, and uses texture unit 0.
#pragma once

#include <cstdint>

#include "engine/pixels/frame_description.h"
#include "gpu/gl_names.h"

// A texture that can be sampled and drawn into. It reads as transparent black outside its edges.
// Its two OpenGL names never change; between frames its storage is one pixel unless it is kept.
struct RenderTexture {
    static RenderTexture create();

    void attach() const; // the framebuffer must be bound
    // Allocates new storage, whose pixels are undefined until they are written.
    void setStorage(std::uint32_t newWidth, std::uint32_t newHeight,
                    std::uint32_t newComponentBytes, unsigned int format);
    void shrink();      // to one pixel; does nothing if it has only one
    void clear() const; // to transparent black

    GlTexture texture;
    GlFramebuffer framebuffer;
    std::uint32_t width = 0; // of the storage, in pixels
    std::uint32_t height = 0;
    std::uint32_t componentBytes = 0;
    bool isShrunk = false;
};

// A texture of one transparent pixel, for inputs that are not connected.
GlTexture makeTransparentTexture();

// A part of a framebuffer and its destination in host memory.
struct PixelRead {
    std::int32_t x; // of the framebuffer, in pixels
    std::int32_t y;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t rowPixels;
    unsigned int format;
    unsigned int type;
    void* pixels;
    std::uint32_t halvedComponents; // 16-bit channels of a pixel to scale by 0.5; 0: none
};

// Never writes outside rowPixels by height; destination pixels outside the texture are unchanged.
void readFramebuffer(const RenderTexture& target, const PixelRead& read);
