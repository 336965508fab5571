// Images in the host's memory and the definitions of effect parameters.
//
// A definition is one record for all kinds; which member of `u` is valid depends on param_type.
#pragma once

#include "sdk/pf_types.h"

struct PF_Pixel {
    std::uint8_t alpha, red, green, blue;
};

// One image. A pixel's channels are in the order alpha, red, green, blue; a channel has 8 bits, 16
// bits (0 to 32768) or is a float.
struct PF_LayerDef {
    void* reserved0; // the host's reference to the layer (AEGP_LayerH); null: no layer
    void* data;      // first pixel of the topmost row; owned by the host
    A_long rowbytes; // distance between rows in bytes
    A_long width;    // pixels
    A_long height;
    PF_RationalScale pix_aspect_ratio;
    A_long origin_x; // position of the first pixel in the layer's frame, pixels
    A_long origin_y;
    A_long dephault; // of a layer parameter; 0: no layer
};
using PF_EffectWorld = PF_LayerDef;

using PF_PixelFormat = A_u_long;
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB32 = 0x62677261;  // "argb", 8 bits
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB64 = 0x36316561;  // "ae16"
inline constexpr PF_PixelFormat PF_PixelFormat_ARGB128 = 0x32336561; // "ae32"

using PF_ParamType = A_long;
inline constexpr PF_ParamType PF_Param_LAYER = 0;
inline constexpr PF_ParamType PF_Param_SLIDER = 1;
inline constexpr PF_ParamType PF_Param_FIX_SLIDER = 2;
inline constexpr PF_ParamType PF_Param_ANGLE = 3;
inline constexpr PF_ParamType PF_Param_CHECKBOX = 4;
inline constexpr PF_ParamType PF_Param_COLOR = 5;
inline constexpr PF_ParamType PF_Param_POINT = 6;
inline constexpr PF_ParamType PF_Param_POPUP = 7;

inline constexpr A_long PF_ParamFlag_START_COLLAPSED = 0x20;

inline constexpr std::int16_t PF_ValueDisplayFlag_PERCENT = 1;
inline constexpr std::int16_t PF_ValueDisplayFlag_PIXEL = 2;

struct PF_SliderDef {
    A_long value;
    A_long valid_min; // range of typed values
    A_long valid_max;
    A_long slider_min; // range of the slider
    A_long slider_max;
    A_long dephault;
};

struct PF_FixedSliderDef {
    PF_Fixed value;
    PF_Fixed valid_min;
    PF_Fixed valid_max;
    PF_Fixed slider_min;
    PF_Fixed slider_max;
    PF_Fixed dephault;
    std::int16_t precision; // number of decimals shown
    std::int16_t display_flags;
};

struct PF_AngleDef { // degrees
    PF_Fixed value;
    PF_Fixed dephault;
    PF_Fixed valid_min;
    PF_Fixed valid_max;
};

struct PF_CheckBoxDef {
    A_long value;
    A_Boolean dephault;
    union {
        const char* nameptr; // text beside the box
    } u;
};

struct PF_ColorDef {
    PF_Pixel value;
    PF_Pixel dephault;
};

// The values are pixels of the frame at its current resolution, the defaults percent of the layer.
struct PF_PointDef {
    PF_Fixed x_value;
    PF_Fixed y_value;
    A_Boolean restrict_bounds;
    PF_Fixed x_dephault;
    PF_Fixed y_dephault;
};

struct PF_PopupDef {
    A_long value; // choices count from 1
    std::int16_t num_choices;
    std::int16_t dephault;
    union {
        const char* namesptr; // the names, separated by '|'; owned by the effect
    } u;
};

union PF_ParamDefUnion {
    PF_LayerDef ld;
    PF_SliderDef sd;
    PF_FixedSliderDef fs_d;
    PF_AngleDef ad;
    PF_CheckBoxDef bd;
    PF_ColorDef cd;
    PF_PointDef td;
    PF_PopupDef pd;
};

inline constexpr A_long PF_MAX_EFFECT_PARAM_NAME_LEN = 31; // bytes without the final zero

struct PF_ParamDef {
    union {
        A_long id; // identifies the parameter in projects
    } uu;
    PF_ParamType param_type;
    char name[PF_MAX_EFFECT_PARAM_NAME_LEN + 1];
    A_long flags;
    PF_ParamDefUnion u;
};
