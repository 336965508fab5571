#include "pbhost/video/video.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <nlohmann/json.hpp>

#include "pbhost/process/failure.h"
#include "pbhost/process/run_program.h"
#include "pbhost/process/temporary_files.h"
#include "pbhost/video/piped_program.h"
#include "pbhost/video/video_pixels.h"

namespace pbhost {

namespace fs = std::filesystem;

namespace {

std::string extensionOf(const std::string& path) {
    std::string extension = fs::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return std::tolower(letter); });
    return extension;
}

double fraction(const std::string& text) {
    const std::size_t slash = text.find('/');
    const double part = slash == std::string::npos ? 1 : std::stod(text.substr(slash + 1));
    return part == 0 ? 0 : std::stod(text.substr(0, slash)) / part;
}

// Whether the stream is shown turned by a quarter, as phones record it.
bool isOnItsSide(const nlohmann::json& stream) {
    for (const nlohmann::json& data : stream.value("side_data_list", nlohmann::json::array()))
        if (std::abs(data.value("rotation", 0)) % 180 == 90)
            return true;
    return false;
}

VideoFacts factsOf(const nlohmann::json& stream) {
    VideoFacts facts;
    facts.width = stream.at("width").get<unsigned>();
    facts.height = stream.at("height").get<unsigned>();
    if (isOnItsSide(stream))
        std::swap(facts.width, facts.height);
    facts.framesPerSecond = fraction(stream.at("r_frame_rate").get<std::string>());
    facts.frames = std::stol(stream.at("nb_read_packets").get<std::string>());
    const std::string format = stream.at("pix_fmt").get<std::string>();
    for (const char* start : {"yuva", "rgba", "argb", "bgra", "abgr", "gbrap", "ya"})
        facts.hasAlpha = facts.hasAlpha || format.starts_with(start);
    facts.isDeep = format.ends_with("le") || format.ends_with("be");
    facts.isFullRange = stream.value("color_range", "tv") == "pc";
    const std::string matrix = stream.value("color_space", "unknown");
    constexpr unsigned leastHdHeight = 720;
    // Without a tag, as players do.
    facts.matrix = matrix != "unknown" && matrix != "gbr" ? matrix
                   : facts.height >= leastHdHeight        ? "bt709"
                                                          : "smpte170m";
    return facts;
}

std::string sizeText(unsigned width, unsigned height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

class VideoReader : public FrameSource {
public:
    VideoReader(std::string path, const VideoFacts& facts)
        : path_(std::move(path)), facts_(facts) {}

    LayerSource read(long frame, const ReadOptions& options) override {
        const Depth depth = options.depth.value_or(facts_.isDeep ? Depth::Bits16 : Depth::Bits8);
        if (program_ == nullptr || frame < next_ || depth != depth_)
            start(depth);
        std::vector<std::byte> bytes(std::size_t{facts_.width} * facts_.height *
                                     bytesPerPixel(depth));
        for (; next_ <= frame; ++next_)
            if (!program_->read(bytes.data(), bytes.size()))
                throw Failure(ExitCode::BadPicture, path_ + ": has no frame " +
                                                        std::to_string(frame) + " " +
                                                        program_->errors());
        Picture picture = fromVideo(bytes, facts_.width, facts_.height, depth);
        picture.header = header();
        return {std::move(picture), fs::absolute(path_).string()};
    }

    std::string fileOf(long) const override { return path_; }
    bool isSerial() const override { return true; }

private:
    // From the first frame.
    void start(Depth depth) {
        program_ = std::make_unique<PipedProgram>(
            std::vector<std::string>{
                "ffmpeg", "-v", "error", "-nostdin", "-i", path_, "-map", "0:v:0", "-vsync",
                "passthrough", "-vf",
                "scale=flags=accurate_rnd+full_chroma_int+bicubic:in_color_matrix=" +
                    facts_.matrix + ":in_range=" + (facts_.isFullRange ? "full" : "limited") +
                    ":out_range=full",
                "-f", "rawvideo", "-pix_fmt", videoFormat(depth), "pipe:1"},
            PipedProgram::Direction::FromProgram);
        next_ = 1;
        depth_ = depth;
    }

    std::shared_ptr<const PictureHeader> header() const {
        auto header = std::make_shared<PictureHeader>();
        header->format = "video";
        header->type = facts_.isDeep ? ValueType::UInt16 : ValueType::UInt8;
        header->hasAlpha = facts_.hasAlpha;
        header->colourSpace = "Rec709";
        header->data = header->display = {0, 0, facts_.width, facts_.height};
        header->framesPerSecond = facts_.framesPerSecond;
        return header;
    }

    const std::string path_;
    const VideoFacts facts_;
    std::unique_ptr<PipedProgram> program_;
    Depth depth_ = Depth::Bits8;
    long next_ = 1; // the frame that the program writes next
};

class VideoWriter : public FrameSink {
public:
    VideoWriter(std::string path, std::string codec, std::optional<int> quality, double rate)
        : path_(std::move(path)), codec_(std::move(codec)), quality_(quality), rate_(rate),
          temporary_(path_) {}

    // The video is one file; a frame is published by being written.
    class Written : public PendingFrame {
        void publish() override {}
    };

    std::unique_ptr<PendingFrame> write(long, const Picture& picture,
                                        const WriteOptions&) override {
        if (program_ == nullptr)
            start(picture);
        if (picture.width != width_ || picture.height != height_)
            throw Failure(ExitCode::RenderFailed,
                          path_ + ": all frames of a video have the same size");
        const std::vector<std::byte> bytes = toVideo(picture);
        if (!program_->write(bytes.data(), bytes.size()))
            fail();
        auto written = std::make_unique<Written>();
        written->isAlphaDropped =
            !hasAlpha_ && picture.header != nullptr && picture.header->hasAlpha;
        return written;
    }

    std::string fileOf(long) const override { return ""; }
    bool isSerial() const override { return true; }

    void finish() override {
        if (program_ == nullptr)
            return;
        if (!program_->finish())
            fail();
        if (const std::error_code error = temporary_.replaceTarget())
            throw Failure(ExitCode::RenderFailed,
                          "cannot write '" + path_ + "': " + error.message());
    }

private:
    [[noreturn]] void fail() {
        program_->finish();
        throw Failure(ExitCode::RenderFailed,
                      "cannot write '" + path_ + "': ffmpeg: " + program_->errors());
    }

    void start(const Picture& picture) {
        width_ = picture.width;
        height_ = picture.height;
        hasAlpha_ = codec_ == "prores" && picture.header != nullptr && picture.header->hasAlpha;
        if ((width_ % 2 != 0 || height_ % 2 != 0) && codec_ == "h264")
            throw Failure(ExitCode::RenderFailed,
                          path_ + ": H.264 needs even sides, not " + sizeText(width_, height_));
        if (const std::error_code error = temporary_.create())
            throw Failure(ExitCode::RenderFailed, path_ + ": " + error.message());
        std::vector<std::string> words = {"ffmpeg",
                                          "-v",
                                          "error",
                                          "-nostdin",
                                          "-y",
                                          "-f",
                                          "rawvideo",
                                          "-pix_fmt",
                                          videoFormat(picture.depth),
                                          "-video_size",
                                          sizeText(width_, height_),
                                          "-framerate",
                                          std::to_string(rate_),
                                          "-i",
                                          "pipe:0",
                                          "-vf"};
        const std::string scale = "scale=flags=accurate_rnd+full_chroma_int+bicubic:out_color_"
                                  "matrix=bt709:out_range=limited";
        // The tags say what the filter did.
        const std::string tags = ",setparams=range=tv:colorspace=bt709:color_primaries=bt709:"
                                 "color_trc=bt709";
        const char* const format = codec_ == "h264" ? "yuv420p"
                                   : hasAlpha_      ? "yuva444p10le"
                                                    : "yuv422p10le";
        words.push_back(scale + ",format=" + format + tags);
        if (codec_ == "h264")
            words.insert(words.end(),
                         {"-c:v", "libx264", "-crf", std::to_string(quality_.value_or(18))});
        else
            words.insert(words.end(),
                         {"-c:v", "prores_ks", "-profile:v", hasAlpha_ ? "4444" : "hq"});
        words.push_back(temporary_.path.string());
        program_ = std::make_unique<PipedProgram>(words, PipedProgram::Direction::ToProgram);
    }

    const std::string path_, codec_;
    const std::optional<int> quality_;
    const double rate_;
    TemporaryFile temporary_;
    std::unique_ptr<PipedProgram> program_;
    unsigned width_ = 0, height_ = 0;
    bool hasAlpha_ = false;
};

} // namespace

bool isVideo(const std::string& path) {
    const std::string extension = extensionOf(path);
    return std::ranges::any_of(
        std::initializer_list<const char*>{".mov", ".mp4", ".mkv", ".avi", ".mxf", ".webm"},
        [&](const char* each) { return extension == each; });
}

VideoFacts probeVideo(const std::string& path) {
    static const std::string entries =
        "stream=width,height,r_frame_rate,nb_read_packets,pix_fmt,color_space,color_range:"
        "stream_side_data=rotation";
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored))
        throw Failure(ExitCode::BadPicture, "cannot read '" + path + "': there is no such file");
    const ProgramResult result =
        runProgram({"ffprobe", "-v", "error", "-select_streams", "v:0", "-count_packets",
                    "-show_entries", entries, "-of", "json", path},
                   "for videos");
    const nlohmann::json json = nlohmann::json::parse(result.out, nullptr, false);
    if (result.code != 0 || !json.is_object() || json.value("streams", nlohmann::json()).empty())
        throw Failure(ExitCode::BadPicture,
                      "cannot read '" + path + "': it has no video: " + result.err);
    return orFail(ExitCode::BadPicture,
                  "cannot read '" + path + "': ", [&] { return factsOf(json["streams"][0]); });
}

std::unique_ptr<FrameSource> openVideo(const std::string& path, const VideoFacts& facts) {
    return std::make_unique<VideoReader>(path, facts);
}

std::unique_ptr<FrameSink> createVideo(const std::string& path, const std::string& codec,
                                       std::optional<int> quality, double framesPerSecond) {
    const std::string extension = extensionOf(path);
    if (extension != ".mov" && extension != ".mp4" && extension != ".mkv")
        throw Failure(ExitCode::Usage, path + ": videos are written as .mov, .mp4 or .mkv");
    const std::string chosen = !codec.empty() ? codec : extension == ".mov" ? "prores" : "h264";
    if (extension == ".mp4" && chosen == "prores")
        throw Failure(ExitCode::Usage, path + ": ProRes is written to .mov or .mkv");
    if (quality && (chosen != "h264" || *quality < 0 || *quality > 51))
        throw Failure(ExitCode::Usage, path + ": --quality is for H.264, from 0 (lossless) to 51");
    return std::make_unique<VideoWriter>(path, chosen, quality, framesPerSecond);
}

} // namespace pbhost
