#include "pbhost/live/child/encoding.h"

#include <png.h>
#include <turbojpeg.h>

#include <memory>
#include <string>

#include "pbhost/process/failure.h"

namespace pbhost::live {

namespace {

constexpr int jpegQuality = 88;

[[noreturn]] void fail(const std::string& format, const char* reason) {
    throw Failure(ExitCode::RenderFailed,
                  "the picture cannot be encoded as " + format + ": " + reason);
}

} // namespace

std::vector<std::byte> encodeJpeg(const DisplayPicture& picture) {
    const std::unique_ptr<void, int (*)(tjhandle)> encoder(tjInitCompress(), tjDestroy);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const int error =
        tjCompress2(encoder.get(), reinterpret_cast<const unsigned char*>(picture.pixels.data()),
                    static_cast<int>(picture.width), 0, static_cast<int>(picture.height), TJPF_RGBX,
                    &buffer, &size, TJSAMP_420, jpegQuality, TJFLAG_FASTDCT);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(buffer, tjFree);
    if (error != 0)
        fail("JPEG", tjGetErrorStr2(encoder.get()));
    const auto* first = reinterpret_cast<const std::byte*>(buffer);
    return {first, first + size};
}

std::vector<std::byte> encodePng(const DisplayPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGBA;
    image.flags = PNG_IMAGE_FLAG_FAST;
    std::vector<std::byte> bytes(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = bytes.size();
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(), 0,
                                  nullptr) == 0)
        fail("PNG", image.message);
    bytes.resize(size);
    return bytes;
}

} // namespace pbhost::live
