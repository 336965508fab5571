// Requests the pixels that a frame needs: the whole of the effect's own layer, whatever part of the
// output is requested, since a kernel may read anywhere.
#include <algorithm>

#include "shell/commands.h"

namespace {

bool isEmpty(const PF_LRect& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

PF_LRect unionOf(const PF_LRect& a, const PF_LRect& b) {
    if (isEmpty(a))
        return b;
    if (isEmpty(b))
        return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

PF_LRect intersectionOf(const PF_LRect& a, const PF_LRect& b) {
    if (isEmpty(a) || isEmpty(b))
        return {a.left, a.top, a.left, a.top};
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
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
    output.result_rect = intersectionOf(unionOf(output.result_rect, checkout.result_rect), wanted);
    output.max_result_rect = unionOf(output.max_result_rect, checkout.max_result_rect);
    return error;
}
