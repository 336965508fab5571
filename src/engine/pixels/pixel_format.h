// The OpenGL formats of the host's pixels: one table by component size, one by channel code.
//
// The host's pixels are uploaded in their memory order as if they were red, green, blue, alpha; the
// shaders correct the order, not these formats.
#pragma once

#include <GL/glew.h>

#include <array>
#include <cstdint>

struct DepthFormat {
    std::uint32_t componentBytes;
    GLint internalFormat;
    GLenum type;
};

inline constexpr std::array<DepthFormat, 3> depthFormats = {{
    {1, GL_RGBA8, GL_UNSIGNED_BYTE},
    {2, GL_RGBA16, GL_UNSIGNED_SHORT},
    {4, GL_RGBA32F_ARB, GL_FLOAT},
}};

struct ChannelFormat {
    std::uint32_t channels;
    std::uint32_t components; // of the upload format
    GLenum upload;            // also for the storage of the texture
    GLenum drawStorage;
    GLenum nodeReadBack;
    GLenum imageReadBack;
};

inline constexpr std::array<ChannelFormat, 4> channelFormats = {{
    {1, 1, GL_RED, GL_RED, GL_RED, GL_RED},
    {2, 3, GL_RGB, GL_RGB, GL_RGB, GL_RGB},
    {3, 4, GL_RGBA, GL_BGRA, GL_RGBA, GL_RGBA},
    {4, 4, GL_RGBA, GL_BGRA, GL_RGBA, GL_ABGR_EXT},
}};

// An unknown code is treated as 8 bits, or as 4 channels.
constexpr const DepthFormat& depthFormat(std::uint32_t componentBytes) {
    for (const DepthFormat& row : depthFormats)
        if (row.componentBytes == componentBytes)
            return row;
    return depthFormats.front();
}

constexpr const ChannelFormat& channelFormat(std::uint32_t channels) {
    for (const ChannelFormat& row : channelFormats)
        if (row.channels == channels)
            return row;
    return channelFormats.back();
}
