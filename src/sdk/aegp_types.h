// The types of the host's scene suites: opaque handles, stream values, times.
//
// The caller owns a handle from a call named "New" and disposes of it through its suite; every
// other handle is owned by the host and valid for the running command.
#pragma once

#include "sdk/pf_params.h"

using A_Err = PF_Err;

struct A_Time { // value/scale seconds
    A_long value;
    A_u_long scale;
};

struct A_Matrix4 { // rows; points are row vectors, the translation is the last row
    A_FpLong mat[4][4];
};

using A_UTF16Char = char16_t;

using AEGP_PluginID = A_long;
using AEGP_MemHandle = struct AEGP_Mem*;
using AEGP_EffectRefH = struct AEGP_EffectRef*;
using AEGP_StreamRefH = struct AEGP_StreamRef*;
using AEGP_LayerH = struct AEGP_Layer*;
using AEGP_ItemH = struct AEGP_Item*;
using AEGP_CompH = struct AEGP_Comp*;
using AEGP_PersistentBlobH = struct AEGP_PersistentBlob*;
using AEGP_MarkerValP = struct AEGP_MarkerVal*;
using AEGP_MaskRefH = struct AEGP_MaskRef*;
using AEGP_MaskOutlineValH = struct AEGP_MaskOutlineVal*;
using AEGP_TextDocumentH = struct AEGP_TextDocument*;
using AEGP_AddKeyframesInfoH = struct AEGP_AddKeyframesInfo*;
using AEGP_InstalledEffectKey = A_long; // 0: none
using AEGP_LayerIDVal = A_long;
using AEGP_MaskIDVal = A_long;

// Whether a time is layer time or composition time.
using AEGP_LTimeMode = A_long;
inline constexpr AEGP_LTimeMode AEGP_LTimeMode_LayerTime = 0;
inline constexpr AEGP_LTimeMode AEGP_LTimeMode_CompTime = 1;

using AEGP_LayerStream = A_long;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ANCHORPOINT = 0;
inline constexpr AEGP_LayerStream AEGP_LayerStream_POSITION = 1;
inline constexpr AEGP_LayerStream AEGP_LayerStream_SCALE = 2;    // percent
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATION = 3; // about z, degrees
inline constexpr AEGP_LayerStream AEGP_LayerStream_OPACITY = 4;  // percent
inline constexpr AEGP_LayerStream AEGP_LayerStream_MARKER = 6;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATE_X = 8; // degrees
inline constexpr AEGP_LayerStream AEGP_LayerStream_ROTATE_Y = 9;
inline constexpr AEGP_LayerStream AEGP_LayerStream_ORIENTATION = 10; // degrees about x, y, z
inline constexpr AEGP_LayerStream AEGP_LayerStream_ZOOM = 11;        // of a camera, pixels

using AEGP_StreamType = A_long;
inline constexpr AEGP_StreamType AEGP_StreamType_NO_DATA = 0;
inline constexpr AEGP_StreamType AEGP_StreamType_ThreeD = 1;
inline constexpr AEGP_StreamType AEGP_StreamType_TwoD = 2;
inline constexpr AEGP_StreamType AEGP_StreamType_OneD = 3;
inline constexpr AEGP_StreamType AEGP_StreamType_COLOR = 4;
inline constexpr AEGP_StreamType AEGP_StreamType_MARKER = 5;
inline constexpr AEGP_StreamType AEGP_StreamType_LAYER_ID = 6;
inline constexpr AEGP_StreamType AEGP_StreamType_MASK = 7;
inline constexpr AEGP_StreamType AEGP_StreamType_TEXT_DOCUMENT = 8;

struct AEGP_ColorVal { // 0 to 1
    A_FpLong alphaF, redF, greenF, blueF;
};

// 32 bytes; which member is valid depends on the stream's type. A popup is one-dimensional and
// counts from 1, a point is in pixels of the layer, an angle in degrees.
union AEGP_StreamVal2 {
    A_FpLong four_d[4]; // first, so that an empty initializer clears all
    A_FpLong one_d;
    struct {
        A_FpLong x, y;
    } two_d;
    struct {
        A_FpLong x, y, z;
    } three_d;
    AEGP_ColorVal color;
    AEGP_MarkerValP markerP;
    AEGP_LayerIDVal layer_id; // 0: none
    AEGP_MaskOutlineValH mask;
    AEGP_TextDocumentH text_document;
};

struct AEGP_StreamValue2 {
    AEGP_StreamRefH streamH;
    AEGP_StreamVal2 val;
};

using AEGP_DynStreamFlag = A_long;
inline constexpr AEGP_DynStreamFlag AEGP_DynStreamFlag_HIDDEN = 1 << 1;

using AEGP_StreamGroupingType = A_long;
inline constexpr AEGP_StreamGroupingType AEGP_StreamGroupingType_LEAF = 0;
inline constexpr AEGP_StreamGroupingType AEGP_StreamGroupingType_NAMED_GROUP = 1;

using AEGP_KeyframeFlags = A_long;

using AEGP_KeyframeInterpolationType = A_long;
inline constexpr AEGP_KeyframeInterpolationType AEGP_KeyInterp_LINEAR = 1;
inline constexpr AEGP_KeyframeInterpolationType AEGP_KeyInterp_HOLD = 3;

using AEGP_MarkerStringType = A_long;
inline constexpr AEGP_MarkerStringType AEGP_MarkerString_COMMENT = 1;

using AEGP_ObjectType = A_long;
inline constexpr AEGP_ObjectType AEGP_ObjectType_AV = 0;
inline constexpr AEGP_ObjectType AEGP_ObjectType_LIGHT = 1;
inline constexpr AEGP_ObjectType AEGP_ObjectType_CAMERA = 2;

using AEGP_LayerFlags = A_long;
inline constexpr AEGP_LayerFlags AEGP_LayerFlag_VIDEO_ACTIVE = 1 << 0;

using AEGP_CameraType = A_long;
inline constexpr AEGP_CameraType AEGP_CameraType_PERSPECTIVE = 0;
inline constexpr AEGP_CameraType AEGP_CameraType_ORTHOGRAPHIC = 1;

using AEGP_LightType = A_long;
inline constexpr AEGP_LightType AEGP_LightType_PARALLEL = 0;
inline constexpr AEGP_LightType AEGP_LightType_SPOT = 1;
inline constexpr AEGP_LightType AEGP_LightType_POINT = 2;
inline constexpr AEGP_LightType AEGP_LightType_AMBIENT = 3;

struct AEGP_MaskVertex { // pixels of the layer; tangents are relative to the vertex
    A_FpLong x, y, tan_in_x, tan_in_y, tan_out_x, tan_out_y;
};

using AEGP_MemFlag = A_long;
inline constexpr AEGP_MemFlag AEGP_MemFlag_NONE = 0;
inline constexpr AEGP_MemFlag AEGP_MemFlag_CLEAR = 1;

using AEGP_MemSize = A_u_long; // bytes

// In bytes, including the terminating zero.
inline constexpr A_long AEGP_MAX_EFFECT_MATCH_NAME_SIZE = 48;
inline constexpr A_long AEGP_MAX_STREAM_MATCH_NAME_SIZE = 40;
