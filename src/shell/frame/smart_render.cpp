// Renders one frame: describes the host's buffers and controls in a FrameDescription, runs the
// graph, and reads the result back into the host's output buffer.
#include <optional>

#include "host/item.h"
#include "host/layer.h"
#include "host/param_checkout.h"
#include "host/suite_holder.h"
#include "sdk/pf_suites.h"
#include "shell/commands.h"
#include "shell/controls/control_layout.h"
#include "shell/frame/parameter_reading.h"
#include "shell/instance/sequence_data.h"
#include "support/report.h"

namespace {

constexpr std::uint32_t channelsOfHost = 4;

float ratio(const A_Ratio& parts) {
    return static_cast<float>(parts.num) / static_cast<float>(parts.den);
}

std::uint32_t componentBytesOf(PF_PixelFormat format) {
    switch (format) {
    case PF_PixelFormat_ARGB128:
        return 4;
    case PF_PixelFormat_ARGB64:
        return 2;
    default:
        return 1;
    }
}

// The worlds that are checked out for a frame.
struct Worlds {
    const PF_EffectWorld* input = nullptr;
    const PF_EffectWorld* output = nullptr;
    PF_PixelFormat format = 0; // of all worlds
};

PF_Err checkOutWorlds(const PF_InData& inData, const PF_SmartRenderCallbacks& callbacks,
                      Worlds& worlds) {
    PF_EffectWorld* input = nullptr;
    PF_EffectWorld* output = nullptr;
    PF_Err error = callbacks.checkout_layer_pixels(inData.effect_ref, 0, &input);
    if (error == PF_Err_NONE)
        error = callbacks.checkout_output(inData.effect_ref, &output);
    if (error == PF_Err_NONE && output != nullptr)
        error = callSuite(inData.pica_basicP, &PF_WorldSuite2::PF_GetPixelFormat,
                          static_cast<const PF_EffectWorld*>(output), &worlds.format);
    worlds.input = input;
    worlds.output = output;
    return error;
}

// Sets the part of a slot that a world determines.
void describeWorld(ImageSlot& slot, const PF_EffectWorld& world, std::uint32_t componentBytes) {
    slot.componentBytes = componentBytes;
    slot.channels = channelsOfHost;
    slot.originX = world.origin_x;
    slot.originY = world.origin_y;
    slot.width = static_cast<std::uint32_t>(world.width);
    slot.height = static_cast<std::uint32_t>(world.height);
    slot.rowPixels = static_cast<std::uint32_t>(world.rowbytes) / (channelsOfHost * componentBytes);
    slot.pixels = world.data;
}

FrameDescription describeFrame(const PF_InData& inData, const Worlds& worlds) {
    FrameDescription frame;
    frame.componentBytes = componentBytesOf(worlds.format);
    frame.channels = channelsOfHost;
    frame.pixelAspect = ratio(inData.pixel_aspect_ratio);
    frame.downsampleX = ratio(inData.downsample_x);
    frame.downsampleY = ratio(inData.downsample_y);
    ImageSlot& own = frame.images[0];
    own.imageIndex = 0;
    own.pixelAspect = frame.pixelAspect;
    describeWorld(own, *worlds.input, frame.componentBytes);
    frame.width = own.width;
    frame.height = own.height;
    frame.rowPixels = static_cast<std::uint32_t>(worlds.output->rowbytes) /
                      (channelsOfHost * frame.componentBytes);
    return frame;
}

float pixelAspectOf(SPBasicSuite* basic, AEGP_LayerH chosen) {
    AEO::Layer layer(basic, chosen);
    AEO::Item item(basic, layer.sourceItem());
    const A_Ratio aspect = item.pixelAspect();
    return item.err() != 0 ? 1.0F : ratio(aspect);
}

// For a layer control without a layer: transparent black over the whole frame.
void describeNoLayer(ImageSlot& slot) {
    slot.componentBytes = 1;
    slot.channels = 3;
    slot.width = slot.height = slot.rowPixels = 1;
}

void describeLayer(const PF_InData& inData, const PF_LayerDef& world, ImageSlot& slot,
                   FrameDescription& frame) {
    frame.width = std::max(frame.width, static_cast<std::uint32_t>(world.width));
    frame.height = std::max(frame.height, static_cast<std::uint32_t>(world.height));
    // The first word is the host's reference to the layer; null if no layer is chosen.
    if (world.reserved0 == nullptr) {
        describeNoLayer(slot);
        return;
    }
    describeWorld(slot, world, frame.componentBytes);
    slot.originX = slot.originY = 0;
    slot.pixelAspect = pixelAspectOf(inData.pica_basicP, static_cast<AEGP_LayerH>(world.reserved0));
}

// The worlds of the layer controls, checked out for the lifetime of this object.
class LayerImages {
public:
    LayerImages(PF_InData& inData, const pbGraph& graph, FrameDescription& frame) {
        std::size_t next = 0;
        forEachLayerImage(graph, [&](const ImageNode& node) {
            const PF_ParamDef control = checkouts_[next].emplace(&inData).read(node.slot);
            ImageSlot& image = frame.images[++next];
            image.imageIndex = node.slot;
            describeLayer(inData, control.u.ld, image, frame);
        });
    }

private:
    std::array<std::optional<ParamCheckout>, layerControlCount> checkouts_;
};

void renderGraph(PF_InData& inData, pbGraph& graph, const Worlds& worlds) {
    ParamCheckout controls(&inData);
    FrameDescription frame = describeFrame(inData, worlds);
    const LayerImages layers(inData, graph, frame);
    readParameters(graph, controls, {frame.downsampleX, frame.downsampleY});
    graph.render(frame);
    FrameDescription target;
    describeWorld(target, *worlds.output, frame.componentBytes);
    graph.output()->readBack(target);
    graph.resetNodes();
}

} // namespace

PF_Err SmartRender(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra) {
    if (extra == nullptr)
        return PF_Err_BAD_CALLBACK_PARAM;
    const GlobalData& globalData = globalDataOf(*in_data);
    const SequenceData* sequence = liveSequence(globalData, out_data->sequence_data);
    if (sequence == nullptr)
        return PF_Err_NONE;
    Worlds worlds;
    const PF_Err error = checkOutWorlds(*in_data, *extra->cb, worlds);
    if (error != PF_Err_NONE || worlds.input == nullptr || worlds.output == nullptr ||
        worlds.output->data == nullptr)
        return error;
    pbGraph* graph = globalData.findGraph(sequence->filePath);
    if (graph == nullptr || !isRunnable(*graph))
        return PF_Err_NONE;
    const ContextSwitch inContext(globalData.device);
    renderGraph(*in_data, *graph, worlds);
    return PF_Err_NONE;
}

// PF_Cmd_RENDER. The host renders with smart render, so there is nothing to do.
PF_Err Render(PF_InData* /*in_data*/, PF_OutData* /*out_data*/, PF_ParamDef** /*params*/,
              PF_LayerDef* /*output*/) {
    _printf("Entry Render\n");
    return PF_Err_NONE;
}
