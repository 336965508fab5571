// The description of one frame for the engine: the output's size and format, and where the input
// images are in host memory.
//
// Plain records, filled and owned by the caller. The pixels belong to the host: those of images are
// only read, those of a target are written within rowPixels by height.
#pragma once

#include <array>
#include <cstdint>

// One image in host memory.
struct ImageSlot {
    std::int32_t imageIndex = -1;     // compared with an image node's slot
    float pixelAspect = 1.0F;         // pixel width divided by pixel height
    std::uint32_t componentBytes = 0; // 1: 8 bits; 2: 16 bits, 0 to 32768; 4: float
    std::uint32_t channels = 0;       // channel code, see pixel_format.h; 4 for the host's images
    std::int32_t originX = 0;         // where the first pixel lies in the frame, in pixels
    std::int32_t originY = 0;
    std::uint32_t width = 0; // pixels
    std::uint32_t height = 0;
    std::uint32_t rowPixels = 0; // row length: the host's row bytes divided by a pixel's bytes
    void* pixels = nullptr;      // first pixel of row 0; may be null
};

// The inherited fields describe the output; its width and height are the size of every texture of
// the frame. For reading back only these fields are used.
struct FrameDescription : ImageSlot {
    float downsampleX = 1.0F; // 0.5 at half resolution
    float downsampleY = 1.0F;
    std::array<ImageSlot, 4> images;
};
