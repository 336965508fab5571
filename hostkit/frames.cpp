#include "hostkit/frames.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace hostkit {

namespace {

constexpr int rowUnitPixels = 16; // rows of the host's own worlds have a multiple of this length
constexpr int channels = 4;

bool isFactor(const A_Ratio& ratio) {
    return ratio.num > 0 && static_cast<A_u_long>(ratio.num) <= ratio.den;
}

bool isOne(const A_Ratio& ratio) {
    return static_cast<A_u_long>(ratio.num) == ratio.den;
}

int scaledLength(int length, const A_Ratio& factor) {
    const std::int64_t den = factor.den;
    return static_cast<int>((std::int64_t{length} * factor.num + den - 1) / den);
}

struct Span { // of source pixels
    int begin;
    int end;
};

Span coveredBy(int pixel, int length, const A_Ratio& factor) {
    const std::int64_t den = factor.den;
    const std::int64_t begin = pixel * den / factor.num;
    const std::int64_t end = ((pixel + 1) * den + factor.num - 1) / factor.num;
    return {static_cast<int>(begin), static_cast<int>(std::min<std::int64_t>(end, length))};
}

template<typename Channel>
const Channel* rowOf(const World& world, int y) {
    return reinterpret_cast<const Channel*>(world.data.data() +
                                            static_cast<std::size_t>(y) * world.rowBytes);
}

template<typename Channel>
Channel meanOf(const World& source, Span columns, Span rows, int channel) {
    double sum = 0;
    for (int y = rows.begin; y < rows.end; ++y)
        for (int x = columns.begin; x < columns.end; ++x)
            sum += rowOf<Channel>(source, y)[channels * x + channel];
    const double mean = sum / ((columns.end - columns.begin) * (rows.end - rows.begin));
    return static_cast<Channel>(std::is_integral_v<Channel> ? std::round(mean) : mean);
}

template<typename Channel>
void downsampleInto(World& target, const World& source, const Resolution& resolution) {
    for (int y = 0; y < target.height; ++y) {
        const Span rows = coveredBy(y, source.height, resolution.y);
        auto* out = const_cast<Channel*>(rowOf<Channel>(target, y));
        for (int x = 0; x < target.width; ++x) {
            const Span columns = coveredBy(x, source.width, resolution.x);
            for (int channel = 0; channel < channels; ++channel)
                *out++ = meanOf<Channel>(source, columns, rows, channel);
        }
    }
}

} // namespace

void requireResolution(const Resolution& resolution) {
    if (!isFactor(resolution.x) || !isFactor(resolution.y))
        throw std::logic_error("a downsample factor lies above 0 and up to 1");
}

PF_LRect boundsOf(const Layer* layer, const Resolution& resolution) {
    if (layer == nullptr || layer->source == nullptr)
        return {};
    const World& pixels = layer->source->pixels;
    return {0, 0, scaledLength(pixels.width, resolution.x),
            scaledLength(pixels.height, resolution.y)};
}

bool isEmpty(const PF_LRect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

PF_LRect intersection(const PF_LRect& a, const PF_LRect& b) {
    const PF_LRect common = {std::max(a.left, b.left), std::max(a.top, b.top),
                             std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
    return isEmpty(common) ? PF_LRect{} : common;
}

World downsampled(const World& source, const Resolution& resolution) {
    World target = makeOutput(scaledLength(source.width, resolution.x),
                              scaledLength(source.height, resolution.y), source.channelBytes);
    if (source.channelBytes == 1)
        downsampleInto<std::uint8_t>(target, source, resolution);
    else if (source.channelBytes == 2)
        downsampleInto<std::uint16_t>(target, source, resolution);
    else
        downsampleInto<float>(target, source, resolution);
    return target;
}

World makeOutput(int width, int height, int channelBytes) {
    const int padding = (rowUnitPixels - width % rowUnitPixels) % rowUnitPixels;
    return makeWorld(width, height, channelBytes, padding);
}

PF_LayerDef recordOf(World& world) {
    PF_LayerDef record{};
    record.data = world.data.data();
    record.rowbytes = world.rowBytes;
    record.width = world.width;
    record.height = world.height;
    record.pix_aspect_ratio = {1, 1};
    return record;
}

std::unique_ptr<LentWorld> lendLayer(Layer* layer, const Resolution& resolution, int channelBytes) {
    auto lent = std::make_unique<LentWorld>();
    if (layer == nullptr || layer->source == nullptr)
        return lent;
    World& source = layer->source->pixels;
    if (source.channelBytes != channelBytes)
        throw std::logic_error("layer " + std::to_string(layer->id) +
                               " has another depth than the project");
    const bool isFull = isOne(resolution.x) && isOne(resolution.y);
    if (!isFull)
        lent->own = downsampled(source, resolution);
    lent->record = recordOf(isFull ? source : lent->own);
    lent->record.reserved0 = layer;
    lent->record.pix_aspect_ratio = layer->source->pixelAspect;
    return lent;
}

} // namespace hostkit
