#include "pbhost/pictures/picture.h"

#include <dlfcn.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <system_error>

#include "pbhost/pictures/picture_formats.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/places.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failRead(const fs::path& path, std::string_view reason) {
    throw Failure(ExitCode::BadPicture,
                  "cannot read '" + path.string() + "': " + std::string(reason));
}

[[noreturn]] void failWrite(const fs::path& path, std::string_view reason) {
    throw Failure(ExitCode::RenderFailed,
                  "cannot write '" + path.string() + "': " + std::string(reason));
}

void checkSource(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found)
        failRead(path, "there is no such file");
    if (error)
        failRead(path, error.message());
    if (fs::is_directory(status))
        failRead(path, "it is a folder");
    if (!fs::is_regular_file(status))
        failRead(path, "it is not a regular file");
    if (::access(path.c_str(), R_OK) != 0)
        failRead(path, "no permission to read it");
}

void checkPicture(const fs::path& path, const Picture& picture) {
    const unsigned pixelBytes = bytesPerPixel(picture.depth);
    if (const std::string fault = sizeFault(picture.width, picture.height, pixelBytes);
        !fault.empty())
        failWrite(path, fault);
    const std::size_t used = std::size_t{picture.width} * pixelBytes;
    if (picture.rowBytes < used ||
        picture.pixels.size() < std::size_t{picture.rowBytes} * (picture.height - 1) + used)
        failWrite(path, "the picture has fewer pixels than its size requires");
}

// Used to replace the temporary name in messages by the user's.
std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// Loaded by the first picture, because loading takes longer than most commands.
const PictureFormats& formats() {
    static const PictureFormats& opened = []() -> const PictureFormats& {
        const fs::path path = findPictureLibrary();
        void* library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        void* function = library == nullptr ? nullptr : ::dlsym(library, "pbhostPictureFormats");
        if (function == nullptr)
            throw Failure(ExitCode::RenderFailed,
                          std::string("the picture library cannot be loaded: ") + ::dlerror());
        return *reinterpret_cast<decltype(&pbhostPictureFormats)>(function)();
    }();
    return opened;
}

} // namespace

Picture makePicture(unsigned width, unsigned height, Depth depth) {
    if (const std::string fault = sizeFault(width, height, bytesPerPixel(depth)); !fault.empty())
        throw Failure(ExitCode::Usage, fault);
    return emptyPicture(width, height, depth);
}

Picture readPicture(const fs::path& path, std::optional<Depth> depth) {
    checkSource(path);
    Picture picture;
    if (const std::string reason = formats().read(path, depth, picture); !reason.empty())
        failRead(path, reason);
    return picture;
}

void requirePlace(const fs::path& path) {
    if (const std::string obstacle = obstacleToWriting(path); !obstacle.empty())
        failWrite(path, obstacle);
}

void requireFormat(const fs::path& path) {
    const std::string extension = path.extension().string();
    if (!formats().canWrite(extension))
        failWrite(path, "no picture format is known for the extension '" + extension + "'");
}

void writePicture(const fs::path& path, const Picture& picture) {
    checkPicture(path, picture);
    requirePlace(path);
    requireFormat(path);
    const TemporaryFile temporary(path);
    if (const std::error_code error = temporary.create())
        failWrite(path, error.message());
    const std::string reason = formats().write(temporary.path, picture);
    if (!reason.empty())
        failWrite(path, replaceAll(reason, temporary.path.string(), path.string()));
    if (const std::error_code error = temporary.replaceTarget())
        failWrite(path, error.message());
}

} // namespace pbhost
