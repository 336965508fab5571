// Rendering of a frame: the render commands and the callbacks that they use.
#include <stdexcept>
#include <utility>

#include "hostkit/calls/call_frame.h"
#include "hostkit/calls/command_stack.h"
#include "hostkit/effect/control_kinds.h"
#include "hostkit/effect/effect.h"
#include "sdk/pf_rect.h"

namespace hostkit {

namespace {

// The newest command, if it is `number` of that effect and renders; otherwise null, with a fault.
ActiveCommand* renderingCommand(PF_ProgPtr effect, PF_Cmd number, const char* call) {
    ActiveCommand* command = ActiveCommand::of(effect, call);
    if (command == nullptr)
        return nullptr;
    if (command->number == number && command->effect().frame() != nullptr)
        return command;
    misuse(call, "not during " + commandName(command->number));
    return nullptr;
}

Layer* layerOfControl(Effect& effect, A_long index, double layerSeconds) {
    return index == 0
               ? effect.layer
               : chosenLayer(effect.control(index).withExpression(layerSeconds), *effect.layer);
}

PF_Err checkoutLayer(PF_ProgPtr effect, A_long index, A_long checkout_id,
                     const PF_RenderRequest* request, A_long what_time, A_long, A_u_long time_scale,
                     PF_CheckoutResult* result) {
    constexpr const char* call = "checkout_layer";
    return contractCall(call, [&] {
        const ActiveCommand* command = renderingCommand(effect, PF_Cmd_SMART_PRE_RENDER, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (request == nullptr || result == nullptr || time_scale == 0)
            return misuse(call,
                          "the request or the result pointer is null, or the time scale is 0");
        Effect& owner = command->effect();
        if (index < 0 || static_cast<std::size_t>(index) >= owner.definitions.size() ||
            !isLayerControl(owner.definitions[index]))
            return misuse(call, "control " + std::to_string(index) + " is not a layer control");
        Frame& frame = *owner.frame();
        Layer* layer = layerOfControl(owner, index, static_cast<double>(what_time) / time_scale);
        const PF_LRect most = contentsOf(layer, frame.resolution);
        const LayerPart part = {layer, commonPart(request->rect, most),
                                request->preserve_rgb_of_zero_alpha != 0,
                                index == 0 ? frame.input : nullptr};
        if (!frame.announced.emplace(checkout_id, part).second)
            return misuse(call, "id " + std::to_string(checkout_id) + " is announced already");
        *result = {part.rect, most};
        return PF_Err_NONE;
    });
}

PF_Err checkoutLayerPixels(PF_ProgPtr effect, A_long checkout_id, PF_EffectWorld** pixels) {
    constexpr const char* call = "checkout_layer_pixels";
    return contractCall(call, [&] {
        const ActiveCommand* command = renderingCommand(effect, PF_Cmd_SMART_RENDER, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (pixels == nullptr)
            return misuse(call, "the world pointer is null");
        Frame& frame = *command->effect().frame();
        const auto announced = frame.announced.find(checkout_id);
        if (announced == frame.announced.end())
            return misuse(call, "id " + std::to_string(checkout_id) + " was not announced");
        std::unique_ptr<CheckedOutWorld>& world = frame.checkedOut[checkout_id];
        if (world == nullptr)
            world = checkOutLayer(announced->second, frame);
        *pixels = &world->record;
        return PF_Err_NONE;
    });
}

PF_Err checkoutOutput(PF_ProgPtr effect, PF_EffectWorld** output) {
    constexpr const char* call = "checkout_output";
    return contractCall(call, [&] {
        const ActiveCommand* command = renderingCommand(effect, PF_Cmd_SMART_RENDER, call);
        if (command == nullptr)
            return PF_Err_BAD_CALLBACK_PARAM;
        if (output == nullptr)
            return misuse(call, "the world pointer is null");
        *output = &command->effect().frame()->output.record;
        return PF_Err_NONE;
    });
}

void makeOutputOf(Frame& frame, Layer& layer, const PF_LRect& rect, World& reused) {
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    const bool fits = reused.width == width && reused.height == height &&
                      reused.componentBytes == frame.componentBytes;
    frame.output.own = fits ? std::move(reused) : makeOutput(width, height, frame.componentBytes);
    frame.output.record = recordOf(frame.output.own);
    frame.output.record.reserved0 = &layer;
    frame.output.record.pix_aspect_ratio = frameItem(layer).pixelAspect;
    frame.output.record.origin_x = rect.left;
    frame.output.record.origin_y = rect.top;
}

} // namespace

// Sets the effect's current Frame during a render and restores the previous one afterwards: a
// render can run during another one.
class Effect::ActiveFrame {
public:
    ActiveFrame(Effect& effect, const RenderRequest& request) : current_(effect.frame_) {
        frame.resolution = {request.downsampleX, request.downsampleY};
        frame.componentBytes = effect.componentBytes();
        frame.input = request.input;
        requireResolution(frame.resolution);
        const Footage* source = effect.layer->source.get();
        if (source == nullptr || source->pixels.componentBytes != frame.componentBytes)
            throw std::logic_error("the layer of an effect needs a source of the project's depth");
        const bool takesFloats = (effect.plugin->outFlags2() & PF_OutFlag2_FLOAT_COLOR_AWARE) != 0;
        if ((frame.componentBytes == 2 && !effect.hasOutFlag(PF_OutFlag_DEEP_COLOR_AWARE)) ||
            (frame.componentBytes == 4 && !takesFloats))
            throw std::logic_error("the module does not support the project's depth");
        previous_ = std::exchange(current_, &frame);
    }
    ~ActiveFrame() { current_ = previous_; }
    ActiveFrame(const ActiveFrame&) = delete;
    ActiveFrame& operator=(const ActiveFrame&) = delete;

    Frame frame;

private:
    Frame*& current_;
    Frame* previous_ = nullptr;
};

RenderResult Effect::renderPlain(const RenderRequest& request, World reusedOutput) {
    ActiveFrame rendering(*this, request);
    Frame& frame = rendering.frame;
    std::vector<PF_ParamDef> values;
    for (std::size_t i = 0; i < definitions.size(); ++i)
        values.push_back(valueAtLayerTime(i, request.seconds - layer->inSeconds, frame.resolution));
    std::vector<PF_ParamDef*> params;
    for (PF_ParamDef& value : values)
        params.push_back(&value);
    RenderResult result;
    result.resultRect = result.maxResultRect = frameOf(layer, frame.resolution);
    const auto input = checkOutLayer({layer, result.resultRect, true, frame.input}, frame);
    values[0].u.ld = input->record;
    makeOutputOf(frame, *layer, result.resultRect, reusedOutput);
    PF_InData inData = inDataAt(request.seconds, frame.resolution);
    result.error = run(PF_Cmd_RENDER, inData, params.data(), nullptr, &frame.output.record);
    result.output = std::move(frame.output.own);
    return result;
}

RenderResult Effect::render(const RenderRequest& request, World reusedOutput) {
    if ((plugin->outFlags2() & PF_OutFlag2_SUPPORTS_SMART_RENDER) == 0)
        return renderPlain(request, std::move(reusedOutput));
    ActiveFrame rendering(*this, request);
    Frame& frame = rendering.frame;
    const PF_LRect whole = frameOf(layer, frame.resolution);
    PF_PreRenderInput input{{request.region.value_or(whole), 0}};
    PF_PreRenderOutput announced{};
    PF_PreRenderCallbacks preCallbacks = {checkoutLayer};
    PF_PreRenderExtra preExtra = {&input, &announced, &preCallbacks};
    PF_InData inData = inDataAt(request.seconds, frame.resolution);
    RenderResult result;
    result.error = run(PF_Cmd_SMART_PRE_RENDER, inData, nullptr, &preExtra);
    result.resultRect = announced.result_rect;
    result.maxResultRect = announced.max_result_rect;
    if (result.error != PF_Err_NONE)
        return result;

    const PF_LRect part = commonPart(announced.result_rect, whole);
    makeOutputOf(frame, *layer, part, reusedOutput);
    if (isEmpty(part))
        return result; // the output is empty
    PF_SmartRenderCallbacks callbacks = {checkoutLayerPixels, checkoutOutput};
    PF_SmartRenderExtra extra = {&callbacks};
    result.error = run(PF_Cmd_SMART_RENDER, inData, nullptr, &extra);
    result.output = std::move(frame.output.own);
    return result;
}

} // namespace hostkit
