#include "pbhost/pictures/picture.h"

#include <dlfcn.h>
#include <unistd.h>

#include <string>
#include <system_error>
#include <utility>

#include "pbhost/pictures/picture_formats.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/session/places.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void failRead(const fs::path& path, const Fault& fault) {
    throw Failure(fault.isUsage ? ExitCode::Usage : ExitCode::BadPicture,
                  "cannot read '" + path.string() + "': " + fault.reason);
}

[[noreturn]] void failWrite(const fs::path& path, const Fault& fault) {
    throw Failure(fault.isUsage ? ExitCode::Usage : ExitCode::RenderFailed,
                  "cannot write '" + path.string() + "': " + fault.reason);
}

void checkSource(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found)
        failRead(path, {"there is no such file"});
    if (error)
        failRead(path, {error.message()});
    if (fs::is_directory(status))
        failRead(path, {"it is a folder"});
    if (!fs::is_regular_file(status))
        failRead(path, {"it is not a regular file"});
    if (::access(path.c_str(), R_OK) != 0)
        failRead(path, {"no permission to read it"});
}

void checkPicture(const fs::path& path, const Picture& picture) {
    const unsigned pixelBytes = bytesPerPixel(picture.depth);
    if (const std::string fault = sizeFault(picture.width, picture.height, pixelBytes);
        !fault.empty())
        failWrite(path, {fault});
    const std::size_t used = std::size_t{picture.width} * pixelBytes;
    if (picture.rowBytes < used ||
        picture.pixels.size() < std::size_t{picture.rowBytes} * (picture.height - 1) + used)
        failWrite(path, {"the picture has fewer pixels than its size requires"});
}

// Used to replace the temporary name in messages by the user's.
std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// Two of the 260 libraries that OpenImageIO needs have half of all symbols to look up. Loaded by
// themselves first, they look in the few libraries that they need, not in all: 125 ms, not 185.
void loadLargeLibraries() {
    for (const char* name : {"libgdal.so.32", "libopenvdb.so.10.0"})
        ::dlopen(name, RTLD_LAZY | RTLD_LOCAL); // there may be none, or another version
}

// Loaded by the first picture, because loading takes longer than most commands.
const PictureFormats& formats() {
    static const PictureFormats& opened = []() -> const PictureFormats& {
        const fs::path path = findPictureLibrary();
        loadLargeLibraries();
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

Picture readPicture(const fs::path& path, const ReadOptions& options) {
    checkSource(path);
    Picture picture;
    if (const Fault fault = formats().read(path, options, picture); !fault.isNone())
        failRead(path, fault);
    return picture;
}

void requirePlace(const fs::path& path) {
    if (const std::string obstacle = obstacleToWriting(path); !obstacle.empty())
        failWrite(path, {obstacle});
}

void requireFormat(const fs::path& path, const WriteOptions& options) {
    const std::string extension = path.extension().string();
    // Always there, so that the library, which takes 0.2 s to load, is loaded while OpenGL starts.
    const bool isKnown = extension == ".png" || extension == ".tif" || extension == ".exr";
    if (isKnown && !options.type && options.compression.empty() && !options.quality)
        return;
    if (const Fault fault = formats().checkFormat(extension, options); !fault.isNone())
        failWrite(path, fault);
}

void requireAbsence(const fs::path& path) {
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(path, ignored)))
        failWrite(path, {"it exists, and --no-clobber keeps it", true});
}

PendingPicture::PendingPicture(fs::path path, bool keepsExisting)
    : target_(std::move(path)), keepsExisting_(keepsExisting),
      temporary_(std::make_unique<TemporaryFile>(target_)) {
    if (const std::error_code error = temporary_->create())
        failWrite(target_, {error.message()});
}

PendingPicture::~PendingPicture() = default;
PendingPicture::PendingPicture(PendingPicture&&) noexcept = default;
PendingPicture& PendingPicture::operator=(PendingPicture&&) noexcept = default;

const fs::path& PendingPicture::file() const {
    return temporary_->path;
}

void PendingPicture::publish() {
    if (keepsExisting_)
        requireAbsence(target_);
    if (const std::error_code error = temporary_->replaceTarget())
        failWrite(target_, {error.message()});
}

PendingPicture encodePicture(const fs::path& path, const Picture& picture,
                             const WriteOptions& options) {
    checkPicture(path, picture);
    requirePlace(path);
    requireFormat(path, options);
    PendingPicture pending(path, options.keepsExisting);
    Fault fault = formats().write(pending.file(), picture, options, pending.isAlphaDropped);
    if (!fault.isNone()) {
        fault.reason = replaceAll(fault.reason, pending.file().string(), path.string());
        failWrite(path, fault);
    }
    return pending;
}

bool writePicture(const fs::path& path, const Picture& picture, const WriteOptions& options) {
    PendingPicture pending = encodePicture(path, picture, options);
    pending.publish();
    return pending.isAlphaDropped;
}

void setThreadsPerFile(int threads) {
    formats().setThreads(threads);
}

} // namespace pbhost
