// The records of `extra` for the two commands of a frame: the first command requests the pixels
// that the effect needs, the second checks them out and writes the output.
#pragma once

#include "sdk/pf_params.h"

struct PF_RenderRequest {
    PF_LRect rect; // pixels of the frame at its current resolution
    A_Boolean preserve_rgb_of_zero_alpha;
};

struct PF_CheckoutResult {
    PF_LRect result_rect;     // the area of the pixels that a checkout returns
    PF_LRect max_result_rect; // the area if everything were requested
};

struct PF_PreRenderInput {
    PF_RenderRequest output_request;
};

struct PF_PreRenderOutput {
    PF_LRect result_rect;
    PF_LRect max_result_rect;
};

struct PF_PreRenderCallbacks {
    // Requests the pixels of a layer parameter (0: the effect's own layer); the render command
    // checks them out under checkout_id.
    PF_Err (*checkout_layer)(PF_ProgPtr effect, A_long index, A_long checkout_id,
                             const PF_RenderRequest* request, A_long what_time, A_long time_step,
                             A_u_long time_scale, PF_CheckoutResult* result);
};

struct PF_PreRenderExtra {
    PF_PreRenderInput* input;
    PF_PreRenderOutput* output;
    PF_PreRenderCallbacks* cb;
};

struct PF_SmartRenderCallbacks {
    // The worlds are owned by the host and valid until the command ends.
    PF_Err (*checkout_layer_pixels)(PF_ProgPtr effect, A_long checkout_id, PF_EffectWorld** pixels);
    PF_Err (*checkout_output)(PF_ProgPtr effect, PF_EffectWorld** output);
};

struct PF_SmartRenderExtra {
    PF_SmartRenderCallbacks* cb;
};
