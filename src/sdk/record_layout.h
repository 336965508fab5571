// The layout of the host's records, checked at compile time: a host and a module that are built
// separately share no declaration, only these sizes and offsets.
//
// Of two numbers, the first is for 32 bits, the second for 64. A double is aligned to 8 bytes in
// both, as on Windows.
#pragma once

#include <cstddef>

#include "sdk/aegp_suites.h"
#include "sdk/pf_smart_render.h"
#include "sdk/pf_suites.h"
#include "sdk/sp_basic.h"

namespace record_layout {

constexpr bool isAt(std::size_t place, std::size_t in32Bits, std::size_t in64Bits) {
    return place == (sizeof(void*) == 4 ? in32Bits : in64Bits);
}

template<class Record>
constexpr bool isOfSize(std::size_t in32Bits, std::size_t in64Bits) {
    return isAt(sizeof(Record), in32Bits, in64Bits);
}

// For tables that contain only functions or pointers.
template<class Table>
constexpr bool isTableOf(std::size_t pointers) {
    return sizeof(Table) == pointers * sizeof(void*);
}

static_assert(sizeof(A_Ratio) == 8);
static_assert(offsetof(A_Ratio, den) == 4);
static_assert(sizeof(PF_LRect) == 16);
static_assert(offsetof(PF_LRect, top) == 4);
static_assert(offsetof(PF_LRect, right) == 8);
static_assert(offsetof(PF_LRect, bottom) == 12);
static_assert(isOfSize<PF_InData>(76, 112));
static_assert(isAt(offsetof(PF_InData, utils), 12, 24));
static_assert(isAt(offsetof(PF_InData, effect_ref), 16, 32));
static_assert(isAt(offsetof(PF_InData, current_time), 20, 40));
static_assert(isAt(offsetof(PF_InData, time_step), 24, 44));
static_assert(isAt(offsetof(PF_InData, time_scale), 28, 48));
static_assert(isAt(offsetof(PF_InData, width), 32, 52));
static_assert(isAt(offsetof(PF_InData, height), 36, 56));
static_assert(isAt(offsetof(PF_InData, downsample_x), 40, 60));
static_assert(isAt(offsetof(PF_InData, downsample_y), 48, 68));
static_assert(isAt(offsetof(PF_InData, pixel_aspect_ratio), 56, 76));
static_assert(isAt(offsetof(PF_InData, global_data), 64, 88));
static_assert(isAt(offsetof(PF_InData, sequence_data), 68, 96));
static_assert(isAt(offsetof(PF_InData, pica_basicP), 72, 104));
static_assert(isOfSize<PF_OutData>(24, 40));
static_assert(isAt(offsetof(PF_OutData, global_data), 4, 8));
static_assert(isAt(offsetof(PF_OutData, num_params), 8, 16));
static_assert(isAt(offsetof(PF_OutData, sequence_data), 12, 24));
static_assert(isAt(offsetof(PF_OutData, out_flags), 16, 32));
static_assert(isAt(offsetof(PF_OutData, out_flags2), 20, 36));
static_assert(sizeof(PF_Pixel) == 4);
static_assert(offsetof(PF_Pixel, red) == 1);
static_assert(offsetof(PF_Pixel, green) == 2);
static_assert(offsetof(PF_Pixel, blue) == 3);
static_assert(isOfSize<PF_LayerDef>(40, 48));
static_assert(isAt(offsetof(PF_LayerDef, data), 4, 8));
static_assert(isAt(offsetof(PF_LayerDef, rowbytes), 8, 16));
static_assert(isAt(offsetof(PF_LayerDef, width), 12, 20));
static_assert(isAt(offsetof(PF_LayerDef, height), 16, 24));
static_assert(isAt(offsetof(PF_LayerDef, pix_aspect_ratio), 20, 28));
static_assert(isAt(offsetof(PF_LayerDef, origin_x), 28, 36));
static_assert(isAt(offsetof(PF_LayerDef, origin_y), 32, 40));
static_assert(isAt(offsetof(PF_LayerDef, dephault), 36, 44));
static_assert(sizeof(PF_SliderDef) == 24);
static_assert(offsetof(PF_SliderDef, valid_min) == 4);
static_assert(offsetof(PF_SliderDef, valid_max) == 8);
static_assert(offsetof(PF_SliderDef, slider_min) == 12);
static_assert(offsetof(PF_SliderDef, slider_max) == 16);
static_assert(offsetof(PF_SliderDef, dephault) == 20);
static_assert(sizeof(PF_FixedSliderDef) == 28);
static_assert(offsetof(PF_FixedSliderDef, valid_min) == 4);
static_assert(offsetof(PF_FixedSliderDef, valid_max) == 8);
static_assert(offsetof(PF_FixedSliderDef, slider_min) == 12);
static_assert(offsetof(PF_FixedSliderDef, slider_max) == 16);
static_assert(offsetof(PF_FixedSliderDef, dephault) == 20);
static_assert(offsetof(PF_FixedSliderDef, precision) == 24);
static_assert(offsetof(PF_FixedSliderDef, display_flags) == 26);
static_assert(sizeof(PF_AngleDef) == 16);
static_assert(offsetof(PF_AngleDef, dephault) == 4);
static_assert(offsetof(PF_AngleDef, valid_min) == 8);
static_assert(offsetof(PF_AngleDef, valid_max) == 12);
static_assert(isOfSize<PF_CheckBoxDef>(12, 16));
static_assert(offsetof(PF_CheckBoxDef, dephault) == 4);
static_assert(offsetof(PF_CheckBoxDef, u) == 8);
static_assert(sizeof(PF_ColorDef) == 8);
static_assert(offsetof(PF_ColorDef, dephault) == 4);
static_assert(sizeof(PF_PointDef) == 20);
static_assert(offsetof(PF_PointDef, y_value) == 4);
static_assert(offsetof(PF_PointDef, restrict_bounds) == 8);
static_assert(offsetof(PF_PointDef, x_dephault) == 12);
static_assert(offsetof(PF_PointDef, y_dephault) == 16);
static_assert(isOfSize<PF_PopupDef>(12, 16));
static_assert(offsetof(PF_PopupDef, num_choices) == 4);
static_assert(offsetof(PF_PopupDef, dephault) == 6);
static_assert(offsetof(PF_PopupDef, u) == 8);
static_assert(isOfSize<PF_ParamDefUnion>(40, 48));
static_assert(isOfSize<PF_ParamDef>(84, 96));
static_assert(offsetof(PF_ParamDef, param_type) == 4);
static_assert(offsetof(PF_ParamDef, name) == 8);
static_assert(offsetof(PF_ParamDef, flags) == 40);
static_assert(isAt(offsetof(PF_ParamDef, u), 44, 48));
static_assert(sizeof(PF_RenderRequest) == 20);
static_assert(offsetof(PF_RenderRequest, preserve_rgb_of_zero_alpha) == 16);
static_assert(sizeof(PF_CheckoutResult) == 32);
static_assert(offsetof(PF_CheckoutResult, max_result_rect) == 16);
static_assert(sizeof(PF_PreRenderInput) == 20);
static_assert(sizeof(PF_PreRenderOutput) == 32);
static_assert(offsetof(PF_PreRenderOutput, max_result_rect) == 16);
static_assert(sizeof(A_Time) == 8);
static_assert(offsetof(A_Time, scale) == 4);
static_assert(sizeof(A_Matrix4) == 128);
static_assert(sizeof(AEGP_MaskVertex) == 48);
static_assert(offsetof(AEGP_MaskVertex, tan_in_x) == 16);
static_assert(offsetof(AEGP_MaskVertex, tan_out_x) == 32);
static_assert(sizeof(AEGP_ColorVal) == 32);
static_assert(offsetof(AEGP_ColorVal, redF) == 8);
static_assert(offsetof(AEGP_ColorVal, greenF) == 16);
static_assert(offsetof(AEGP_ColorVal, blueF) == 24);
static_assert(sizeof(AEGP_StreamVal2) == 32);
static_assert(sizeof(AEGP_StreamValue2) == 40);
static_assert(offsetof(AEGP_StreamValue2, val) == 8);

static_assert(isTableOf<PF_ParamUtilsSuite1>(1));
static_assert(isTableOf<PF_WorldSuite2>(1));
static_assert(isTableOf<PF_AdvAppSuite1>(2));
static_assert(isTableOf<PF_EffectUISuite1>(1));
static_assert(isTableOf<AEGP_MemorySuite1>(6));
static_assert(isTableOf<AEGP_PersistentDataSuite1>(9));
static_assert(isTableOf<AEGP_UtilitySuite11>(4));
static_assert(isTableOf<AEGP_PFInterfaceSuite1>(4));
static_assert(isTableOf<AEGP_EffectSuite3>(9));
static_assert(isTableOf<AEGP_StreamSuite9>(14));
static_assert(isTableOf<AEGP_KeyframeSuite4>(14));
static_assert(isTableOf<AEGP_LayerMaskSuite5>(4));
static_assert(isTableOf<AEGP_MaskOutlineSuite3>(7));
static_assert(isTableOf<AEGP_LightSuite2>(1));
static_assert(isTableOf<AEGP_TextDocumentSuite1>(2));
static_assert(isTableOf<AEGP_DynamicStreamSuite5>(12));
static_assert(isTableOf<AEGP_MarkerSuite2>(1));
static_assert(isTableOf<AEGP_LayerSuite12>(18));
static_assert(isTableOf<AEGP_CameraSuite2>(2));
static_assert(isTableOf<AEGP_ItemSuite13>(3));
static_assert(isTableOf<AEGP_CompSuite11>(3));
static_assert(isTableOf<PF_InteractCallbacks>(3));
static_assert(isTableOf<PF_PreRenderCallbacks>(1));
static_assert(isTableOf<PF_PreRenderExtra>(3));
static_assert(isTableOf<PF_SmartRenderCallbacks>(2));
static_assert(isTableOf<PF_SmartRenderExtra>(1));
static_assert(isTableOf<PF_UtilCallbacks>(5));
static_assert(isTableOf<SPBasicSuite>(2));

} // namespace record_layout
