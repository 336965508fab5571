#include "pbhost/pictures/oiio/conversion.h"

#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "pbhost/pictures/oiio/host_channels.h"

namespace pbhost {

namespace {

// Loading a configuration takes long, and a sequence has many files.
OIIO::ColorConfig& configurationOf(const std::string& file) {
    static std::mutex mutex;
    static std::map<std::string, OIIO::ColorConfig> loaded;
    const std::lock_guard lock(mutex);
    return loaded.try_emplace(file, file).first->second;
}

void divideByAlpha(float* pixel) {
    if (pixel[3] != 0)
        for (int c = 0; c < 3; ++c)
            pixel[c] /= pixel[3];
}

void multiplyByAlpha(float* pixel) {
    for (int c = 0; c < 3; ++c)
        pixel[c] *= pixel[3];
}

float hostToFloat(std::uint8_t value) {
    return float(value) / 255.0f;
}
float hostToFloat(std::uint16_t value) {
    return float(value) / 32768.0f;
}
float hostToFloat(std::uint32_t value) {
    return std::bit_cast<float>(value);
}

// A NaN becomes 0.
template<typename ChannelOf>
typename ChannelOf::Type floatToHost(ChannelOf, float value) {
    if constexpr (std::is_same_v<typename ChannelOf::Type, std::uint32_t>)
        return std::bit_cast<std::uint32_t>(value);
    else {
        const float scaled = (value > 0 ? std::min(value, 1.0f) : 0.0f) * float(ChannelOf::white);
        // std::lround would be a function call for each channel.
        return typename ChannelOf::Type(scaled + 0.5f); // NOLINT(bugprone-incorrect-roundings)
    }
}

template<typename Test>
bool allPixels(const Picture& picture, Test test) {
    return withChannel(picture.depth, [&](auto channel) {
        using Type = typename decltype(channel)::Type;
        std::array<Type, channelsPerPixel> pixel;
        for (unsigned y = 0; y < picture.height; ++y) {
            const std::byte* at = picture.row(y);
            for (unsigned x = 0; x < picture.width; ++x, at += sizeof pixel) {
                std::memcpy(pixel.data(), at, sizeof pixel);
                if (!test(channel, pixel))
                    return false;
            }
        }
        return true;
    });
}

} // namespace

Fault PixelConversion::setColours(const std::string& from, const std::string& to,
                                  const std::string& configuration) {
    if (to.empty() || from == to)
        return {};
    OIIO::ColorConfig& config = configurationOf(configuration);
    colours_ = config.createColorProcessor(from, to);
    const std::string reason = config.geterror(); // without a configuration there is always one
    if (colours_)
        return {};
    std::string names;
    for (const std::string& name : config.getColorSpaceNames())
        names.append(names.empty() ? "" : ", ").append(name);
    return {"there is no conversion from colour space '" + from + "' to '" + to + "'" +
                (reason.empty() ? "" : ": " + reason) + "; the known ones are: " + names,
            true};
}

void PixelConversion::apply(float* pixels, std::size_t count) const {
    const bool isColourConverted = colours_ && !colours_->isNoOp();
    if (before_ == Alpha::Premultiplied && (isColourConverted || after_ == Alpha::Straight))
        for (std::size_t i = 0; i < count; ++i)
            divideByAlpha(pixels + 4 * i);
    if (isColourConverted)
        colours_->apply(pixels, int(count), 1, 3, sizeof(float), 4 * sizeof(float),
                        OIIO::stride_t(count * 4 * sizeof(float)));
    if (after_ == Alpha::Premultiplied && (isColourConverted || before_ == Alpha::Straight))
        for (std::size_t i = 0; i < count; ++i)
            // A glow without alpha, which division left as it was, is left again.
            if (before_ == Alpha::Straight || pixels[4 * i + 3] != 0)
                multiplyByAlpha(pixels + 4 * i);
}

std::string assumedSpace(const std::string& stated, ValueType type) {
    if (!stated.empty())
        return stated;
    return depthOf(type) == Depth::Bits32 ? "linear" : "sRGB";
}

void takeFloats(const Picture& picture, unsigned top, unsigned bottom, float* target) {
    withChannel(picture.depth, [&](auto channel) {
        using Type = typename decltype(channel)::Type;
        std::array<Type, channelsPerPixel> pixel;
        for (unsigned y = top; y < bottom; ++y) {
            const std::byte* at = picture.row(y);
            for (unsigned x = 0; x < picture.width; ++x, at += sizeof pixel) {
                std::memcpy(pixel.data(), at, sizeof pixel);
                for (const unsigned c : {1u, 2u, 3u, 0u})
                    *target++ = hostToFloat(pixel[c]);
            }
        }
    });
}

void convertPicture(Picture& picture, const PixelConversion& conversion) {
    std::vector<float> row(std::size_t{picture.width} * channelsPerPixel);
    for (unsigned y = 0; y < picture.height; ++y) {
        takeFloats(picture, y, y + 1, row.data());
        conversion.apply(row.data(), picture.width);
        auto* to = reinterpret_cast<float*>(picture.row(y));
        for (std::size_t i = 0; i < row.size(); i += 4) {
            to[i] = row[i + 3];
            std::copy_n(&row[i], 3, &to[i + 1]);
        }
    }
}

Picture toDepth(const Picture& picture, Depth depth) {
    Picture result = emptyPicture(picture.width, picture.height, depth);
    std::vector<float> row(std::size_t{picture.width} * channelsPerPixel);
    withChannel(depth, [&](auto channel) {
        using Type = typename decltype(channel)::Type;
        for (unsigned y = 0; y < picture.height; ++y) {
            takeFloats(picture, y, y + 1, row.data());
            auto* to = reinterpret_cast<Type*>(result.row(y));
            for (std::size_t i = 0; i < row.size(); i += 4)
                for (std::size_t c = 0; c < 4; ++c)
                    to[i + c] = floatToHost(channel, row[i + (c + 3) % 4]);
        }
    });
    result.header = picture.header;
    return result;
}

Picture oriented(const Picture& picture, int orientation) {
    const bool isTurned = orientation >= 5;
    Picture result = emptyPicture(isTurned ? picture.height : picture.width,
                                  isTurned ? picture.width : picture.height, picture.depth);
    result.header = picture.header;
    // Where the file's first row and first column are shown.
    const bool fromRight =
        orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
    const bool fromBottom =
        orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
    const unsigned bytes = bytesPerPixel(picture.depth);
    for (unsigned y = 0; y < result.height; ++y)
        for (unsigned x = 0; x < result.width; ++x) {
            const unsigned across = fromRight ? result.width - 1 - x : x;
            const unsigned down = fromBottom ? result.height - 1 - y : y;
            const std::byte* from = picture.row(isTurned ? across : down) +
                                    std::size_t{isTurned ? down : across} * bytes;
            std::memcpy(result.row(y) + std::size_t{x} * bytes, from, bytes);
        }
    return result;
}

bool isAllGrey(const Picture& picture) {
    return allPixels(picture, [](auto, const auto& pixel) {
        return pixel[1] == pixel[2] && pixel[2] == pixel[3];
    });
}

bool isAllOpaque(const Picture& picture) {
    return allPixels(picture, [](auto channel, const auto& pixel) {
        return pixel[0] == decltype(channel)::white;
    });
}

} // namespace pbhost
