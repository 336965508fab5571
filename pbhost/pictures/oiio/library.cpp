// The picture format library. It is a separate library, loaded only when a picture is read or
// written, because OpenImageIO depends on hundreds of libraries.
#include <OpenImageIO/imageio.h>

#include "pbhost/pictures/oiio/reading.h"
#include "pbhost/pictures/oiio/writing.h"

namespace pbhost {

namespace {

class OiioFormats : public PictureFormats {
    Fault read(const std::filesystem::path& path, const ReadOptions& options,
               Picture& picture) const override {
        return readFile(path, options, picture);
    }

    Fault write(const std::filesystem::path& path, const Picture& picture,
                const WriteOptions& options, bool& isAlphaDropped) const override {
        return writeFile(path, picture, options, isAlphaDropped);
    }

    Fault checkFormat(const std::string& extension, const WriteOptions& options) const override {
        return formatFault(extension, options);
    }

    void setThreads(int threads) const override {
        OIIO::attribute("threads", threads);
        OIIO::attribute("exr_threads", threads == 1 ? -1 : threads);
    }
};

} // namespace

} // namespace pbhost

const pbhost::PictureFormats* pbhostPictureFormats() {
    static const pbhost::OiioFormats formats;
    return &formats;
}
