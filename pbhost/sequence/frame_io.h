// Where the pictures of a sequence come from and where its frames go. Both are called by threads of
// a pool.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pbhost/pictures/picture.h"
#include "pbhost/sequence/frame_list.h"
#include "pbhost/session/scene.h"

namespace pbhost {

// The picture of the effects' layer, frame by frame.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    // Throws Failure. `options` decide the depth.
    virtual LayerSource read(long frame, const ReadOptions& options) = 0;
    // The file of a frame; empty: none that changes with the frame.
    virtual std::string fileOf(long frame) const = 0;
    // Whether frames must be read in ascending order, one after the other.
    virtual bool isSerial() const { return false; }
};

// A frame on its way to its place. It is published in the order of the frames.
class PendingFrame {
public:
    virtual ~PendingFrame() = default;
    virtual void publish() = 0; // throws Failure (RenderFailed)

    bool isAlphaDropped = false;
};

class FrameSink {
public:
    virtual ~FrameSink() = default;

    // Throws Failure.
    virtual std::unique_ptr<PendingFrame> write(long frame, const Picture& picture,
                                                const WriteOptions& options) = 0;
    // The file of a frame; empty if all frames are one file.
    virtual std::string fileOf(long frame) const = 0;
    virtual bool isSerial() const { return false; }
    // Completes the output after the last frame.
    virtual void finish() {}
};

// Files of pictures.
class PictureFiles : public FrameSource, public FrameSink {
public:
    explicit PictureFiles(FrameFiles names) : files_(std::move(names)) {}

    LayerSource read(long frame, const ReadOptions& options) override;
    std::unique_ptr<PendingFrame> write(long frame, const Picture& picture,
                                        const WriteOptions& options) override;
    std::string fileOf(long frame) const override { return files_.at(frame); }
    bool isSerial() const override { return false; }

private:
    FrameFiles files_;
};

// Reads a picture with the name, which may be a pattern, as its file.
LayerSource readFrame(const FrameFiles& files, long frame, const ReadOptions& options);

} // namespace pbhost
