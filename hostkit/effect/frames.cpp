#include "hostkit/effect/frames.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "sdk/pf_rect.h"

namespace hostkit {

namespace {

constexpr int rowUnitPixels = 16; // row lengths of the host's worlds are multiples of it
constexpr std::size_t channels = 4;

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

std::size_t offsetOf(const World& world, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(world.rowBytes) +
           static_cast<std::size_t>(x) * static_cast<std::size_t>(world.pixelBytes());
}

template<typename Channel>
const Channel* rowOf(const World& world, int y) {
    return reinterpret_cast<const Channel*>(world.data.data() + offsetOf(world, 0, y));
}

// Large enough for the sum of all integer channel values of an image.
template<typename Channel>
using Sum = std::conditional_t<std::is_integral_v<Channel>, std::uint64_t, double>;

// The same for a column of an image.
template<typename Channel>
using ColumnSum = std::conditional_t<std::is_integral_v<Channel>, std::uint32_t, double>;

template<typename Channel, typename Number>
Channel meanOf(Number sum, unsigned count) {
    if constexpr (!std::is_integral_v<Channel>)
        return static_cast<Channel>(sum / count);
    else if (std::has_single_bit(count)) // the usual case: a resolution of 1/2 or 1/4
        return static_cast<Channel>((sum + count / 2) >> std::countr_zero(count));
    else
        return static_cast<Channel>((2 * sum + count) / (2 * count));
}

std::vector<Span> spansOf(int targetLength, int length, const A_Ratio& factor) {
    std::vector<Span> spans;
    for (int pixel = 0; pixel < targetLength; ++pixel)
        spans.push_back(coveredBy(pixel, length, factor));
    return spans;
}

// Sums whole rows first, in the order of memory.
template<typename Channel>
void addRows(const World& source, const Span& rows, std::vector<ColumnSum<Channel>>& sums) {
    std::ranges::fill(sums, ColumnSum<Channel>{});
    for (int y = rows.begin; y < rows.end; ++y) {
        const Channel* row = rowOf<Channel>(source, y);
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += row[i];
    }
}

template<typename Channel>
void averageColumns(const std::vector<ColumnSum<Channel>>& sums, const std::vector<Span>& spans,
                    int rowCount, Channel* out) {
    for (const Span& columns : spans) {
        std::array<Sum<Channel>, channels> all{};
        for (int x = columns.begin; x < columns.end; ++x)
            for (std::size_t channel = 0; channel < channels; ++channel)
                all[channel] += sums[static_cast<std::size_t>(x) * channels + channel];
        const auto count = static_cast<unsigned>((columns.end - columns.begin) * rowCount);
        for (const Sum<Channel> sum : all)
            *out++ = meanOf<Channel>(sum, count);
    }
}

// The common case of resolution 1/2, where each output pixel covers 2 by 2 source pixels: a loop
// that the compiler vectorizes.
template<typename Channel>
void averagePairs(const ColumnSum<Channel>* __restrict sums, Channel* __restrict out, int width) {
    for (int x = 0; x < width; ++x, sums += 2 * channels, out += channels)
        for (std::size_t channel = 0; channel < channels; ++channel)
            out[channel] = meanOf<Channel>(sums[channel] + sums[channels + channel], 4);
}

template<typename Channel>
void downsampleInto(World& target, const World& source, const Resolution& resolution) {
    std::vector<ColumnSum<Channel>> sums(static_cast<std::size_t>(source.width) * channels);
    const std::vector<Span> spans = spansOf(target.width, source.width, resolution.x);
    const bool hasPairs = std::ranges::all_of(
        spans, [](const Span& columns) { return columns.end - columns.begin == 2; });
    for (int y = 0; y < target.height; ++y) {
        const Span rows = coveredBy(y, source.height, resolution.y);
        addRows<Channel>(source, rows, sums);
        auto* out = const_cast<Channel*>(rowOf<Channel>(target, y));
        if (hasPairs && rows.end - rows.begin == 2)
            averagePairs<Channel>(sums.data(), out, target.width);
        else
            averageColumns<Channel>(sums, spans, rows.end - rows.begin, out);
    }
}

// The layer's pixels at the frame's resolution, downsampled at the first request.
World& pixelsOf(Layer& layer, Frame& frame) {
    World& source = layer.source->pixels;
    if (source.componentBytes != frame.componentBytes)
        throw std::logic_error("layer " + std::to_string(layer.id) +
                               " has another depth than the project");
    if (isOne(frame.resolution.x) && isOne(frame.resolution.y))
        return source;
    const auto [entry, isNew] = frame.downsampled.try_emplace(&layer);
    if (isNew)
        entry->second = downsampled(source, frame.resolution);
    return entry->second;
}

// A copy of the part with transparent pixels set to black.
World withoutHiddenRgb(const World& pixels, const PF_LRect& part) {
    World copy = makeOutput(part.right - part.left, part.bottom - part.top, pixels.componentBytes);
    const std::size_t alphaBytes = static_cast<std::size_t>(pixels.componentBytes);
    for (int y = 0; y < copy.height; ++y)
        for (int x = 0; x < copy.width; ++x) {
            const std::byte* from = &pixels.data[offsetOf(pixels, part.left + x, part.top + y)];
            const auto isZero = [](std::byte each) { return each == std::byte{0}; };
            if (!std::all_of(from, from + alphaBytes, isZero))
                std::copy_n(from, copy.pixelBytes(), &copy.data[offsetOf(copy, x, y)]);
        }
    return copy;
}

} // namespace

void requireResolution(const Resolution& resolution) {
    if (!isFactor(resolution.x) || !isFactor(resolution.y))
        throw std::logic_error("a downsample factor must be above 0 and at most 1");
}

PF_LRect frameOf(const Layer* layer, const Resolution& resolution) {
    if (layer == nullptr || layer->source == nullptr)
        return {};
    const World& pixels = layer->source->pixels;
    return {0, 0, scaledLength(pixels.width, resolution.x),
            scaledLength(pixels.height, resolution.y)};
}

PF_LRect contentsOf(const Layer* layer, const Resolution& resolution) {
    const PF_LRect whole = frameOf(layer, resolution);
    if (layer == nullptr || !layer->contents)
        return whole;
    // Partly covered pixels belong to the area.
    const auto scaledStart = [](A_long start, const A_Ratio& factor) {
        return static_cast<A_long>(std::int64_t{start} * factor.num / std::int64_t{factor.den});
    };
    const PF_LRect& full = *layer->contents;
    return commonPart({scaledStart(full.left, resolution.x), scaledStart(full.top, resolution.y),
                       scaledLength(full.right, resolution.x),
                       scaledLength(full.bottom, resolution.y)},
                      whole);
}

PF_LRect commonPart(const PF_LRect& a, const PF_LRect& b) {
    const PF_LRect common = intersection(a, b);
    return isEmpty(common) ? PF_LRect{} : common;
}

World downsampled(const World& source, const Resolution& resolution) {
    World target = makeOutput(scaledLength(source.width, resolution.x),
                              scaledLength(source.height, resolution.y), source.componentBytes);
    if (source.componentBytes == 1)
        downsampleInto<std::uint8_t>(target, source, resolution);
    else if (source.componentBytes == 2)
        downsampleInto<std::uint16_t>(target, source, resolution);
    else
        downsampleInto<float>(target, source, resolution);
    return target;
}

World makeOutput(int width, int height, int componentBytes) {
    const int padding = (rowUnitPixels - width % rowUnitPixels) % rowUnitPixels;
    return makeWorld(width, height, componentBytes, padding);
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

std::unique_ptr<CheckedOutWorld> checkOutLayer(const LayerPart& part, Frame& frame) {
    auto world = std::make_unique<CheckedOutWorld>();
    if (part.layer == nullptr || part.layer->source == nullptr)
        return world;
    World& pixels = part.replacement ? *part.replacement : pixelsOf(*part.layer, frame);
    if (part.keepsHiddenRgb || isEmpty(part.rect)) {
        world->record = recordOf(pixels);
        world->record.data = pixels.data.data() + offsetOf(pixels, part.rect.left, part.rect.top);
    } else {
        world->own = withoutHiddenRgb(pixels, part.rect);
        world->record = recordOf(world->own);
    }
    world->record.width = part.rect.right - part.rect.left;
    world->record.height = part.rect.bottom - part.rect.top;
    world->record.origin_x = part.rect.left;
    world->record.origin_y = part.rect.top;
    world->record.reserved0 = part.layer;
    world->record.pix_aspect_ratio = part.layer->source->pixelAspect;
    return world;
}

} // namespace hostkit
