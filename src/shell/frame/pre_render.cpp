// Requests the pixels that a frame needs: always the whole of the effect's own layer, because a
// kernel may read anywhere.
#include <algorithm>

#include "sdk/pf_rect.h"
#include "shell/commands.h"

namespace {

PF_LRect unionOf(const PF_LRect& a, const PF_LRect& b) {
    if (isEmpty(a))
        return b;
    if (isEmpty(b))
        return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

// Without pixels or without a wanted part, an empty rectangle at the pixels' corner.
PF_LRect wantedPart(const PF_LRect& pixels, const PF_LRect& wanted) {
    if (isEmpty(pixels) || isEmpty(wanted))
        return {pixels.left, pixels.top, pixels.left, pixels.top};
    return intersection(pixels, wanted);
}

} // namespace

PF_Err SmartPreRender(PF_InData* in_data, PF_OutData* /*out_data*/, PF_PreRenderExtra* extra) {
    if (extra == nullptr)
        return PF_Err_BAD_CALLBACK_PARAM;
    const PF_LRect& wanted = extra->input->output_request.rect;
    PF_RenderRequest request = extra->input->output_request;
    request.rect = {0, 0, in_data->width, in_data->height};
    request.preserve_rgb_of_zero_alpha = 1;
    PF_CheckoutResult checkout{};
    const PF_Err error =
        extra->cb->checkout_layer(in_data->effect_ref, 0, 0, &request, in_data->current_time,
                                  in_data->time_step, in_data->time_scale, &checkout);
    PF_PreRenderOutput& output = *extra->output;
    output.result_rect = wantedPart(unionOf(output.result_rect, checkout.result_rect), wanted);
    output.max_result_rect = unionOf(output.max_result_rect, checkout.max_result_rect);
    return error;
}
