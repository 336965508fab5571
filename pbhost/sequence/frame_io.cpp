#include "pbhost/sequence/frame_io.h"

namespace pbhost {

namespace {

class PendingFile : public PendingFrame {
public:
    explicit PendingFile(PendingPicture picture) : picture_(std::move(picture)) {
        isAlphaDropped = picture_.isAlphaDropped;
    }
    void publish() override { picture_.publish(); }

private:
    PendingPicture picture_;
};

} // namespace

LayerSource readFrame(const FrameFiles& files, long frame, const ReadOptions& options) {
    return {readPicture(files.at(frame), options), std::filesystem::absolute(files.text).string()};
}

LayerSource PictureFiles::read(long frame, const ReadOptions& options) {
    return readFrame(files_, frame, options);
}

std::unique_ptr<PendingFrame> PictureFiles::write(long frame, const Picture& picture,
                                                  const WriteOptions& options) {
    return std::make_unique<PendingFile>(encodePicture(files_.at(frame), picture, options));
}

} // namespace pbhost
