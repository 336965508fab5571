// The host's basic records: the input and output of every command.
//
// Only the members that the system uses are declared. The host owns every record here and every
// table that it points to; a pointer from one is valid only during the running command.
#pragma once

#include <cstdint>

using A_long = std::int32_t;
using A_u_long = std::uint32_t;
using A_u_longlong = std::uint64_t;
using A_Boolean = std::uint8_t;
using A_FpLong = double;

struct A_Ratio {
    A_long num;
    A_u_long den;
};

// Result of a command and of most host calls; 0 is success.
using PF_Err = A_long;
inline constexpr PF_Err PF_Err_NONE = 0;
inline constexpr PF_Err PF_Err_OUT_OF_MEMORY = 4;
inline constexpr PF_Err PF_Err_INTERNAL_STRUCT_DAMAGED = 512;
inline constexpr PF_Err PF_Err_BAD_CALLBACK_PARAM = 516;

// A movable block of host memory: the handle points to the address of the block, which is fixed
// while the handle is locked.
using PF_Handle = void**;

// The effect instance, as the host names it in its callbacks.
using PF_ProgPtr = struct _PF_ProgPtr*;

using PF_Fixed = std::int32_t; // 16.16 fixed point
using PF_RationalScale = A_Ratio;

struct PF_LRect { // pixels; right and bottom are not included
    A_long left, top, right, bottom;
};

// Commands by their number; the others, up to the host's highest, have no handler.
using PF_Cmd = A_long;
inline constexpr PF_Cmd PF_Cmd_ABOUT = 0;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETUP = 1;
inline constexpr PF_Cmd PF_Cmd_GLOBAL_SETDOWN = 3;
inline constexpr PF_Cmd PF_Cmd_PARAMS_SETUP = 4;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETUP = 5;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_RESETUP = 6;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_FLATTEN = 7;
inline constexpr PF_Cmd PF_Cmd_SEQUENCE_SETDOWN = 8;
inline constexpr PF_Cmd PF_Cmd_DO_DIALOG = 9;
inline constexpr PF_Cmd PF_Cmd_RENDER = 11;
inline constexpr PF_Cmd PF_Cmd_USER_CHANGED_PARAM = 13;
inline constexpr PF_Cmd PF_Cmd_UPDATE_PARAMS_UI = 14;
inline constexpr PF_Cmd PF_Cmd_SMART_PRE_RENDER = 23;
inline constexpr PF_Cmd PF_Cmd_SMART_RENDER = 24;

inline constexpr A_long PF_OutFlag_KEEP_RESOURCE_OPEN = 1 << 0;
inline constexpr A_long PF_OutFlag_SEQUENCE_DATA_NEEDS_FLATTENING = 1 << 4;
inline constexpr A_long PF_OutFlag_I_DO_DIALOG = 1 << 5;
inline constexpr A_long PF_OutFlag_SEND_DO_DIALOG = 1 << 7;
inline constexpr A_long PF_OutFlag_DEEP_COLOR_AWARE = 1 << 25;
inline constexpr A_long PF_OutFlag_SEND_UPDATE_PARAMS_UI = 1 << 26;
inline constexpr A_long PF_OutFlag2_SUPPORTS_SMART_RENDER = 1 << 10;
inline constexpr A_long PF_OutFlag2_FLOAT_COLOR_AWARE = 1 << 12;

struct PF_ParamDef;

// The host's utility callbacks. Sizes are in bytes.
struct PF_UtilCallbacks {
    PF_Handle (*host_new_handle)(A_u_longlong size); // null: out of memory
    void* (*host_lock_handle)(PF_Handle handle);     // the address of the block
    void (*host_unlock_handle)(PF_Handle handle);
    void (*host_dispose_handle)(PF_Handle handle); // also while locked
    A_u_longlong (*host_get_handle_size)(PF_Handle handle);
};

// Callbacks for the effect's own parameters. Times are in units of 1/time_scale seconds.
struct PF_InteractCallbacks {
    // Fills in the definition with its value at that time; valid until it is checked in.
    PF_Err (*checkout_param)(PF_ProgPtr effect, A_long index, A_long what_time, A_long time_step,
                             A_u_long time_scale, PF_ParamDef* param);
    PF_Err (*checkin_param)(PF_ProgPtr effect, PF_ParamDef* param);
    // index -1 appends. Only during parameter setup.
    PF_Err (*add_param)(PF_ProgPtr effect, A_long index, PF_ParamDef* definition);
};

struct SPBasicSuite;

// The input of each command.
struct PF_InData {
    PF_InteractCallbacks inter;
    PF_UtilCallbacks* utils;
    PF_ProgPtr effect_ref;
    A_long current_time; // units of 1/time_scale seconds, as time_step
    A_long time_step;
    A_u_long time_scale; // units per second
    A_long width;        // size of the layer at full resolution, pixels
    A_long height;
    PF_RationalScale downsample_x; // 1/2 at half resolution
    PF_RationalScale downsample_y;
    PF_RationalScale pixel_aspect_ratio; // width of a pixel divided by its height
    PF_Handle global_data;               // null until global setup has stored one
    PF_Handle sequence_data;             // null before sequence setup
    SPBasicSuite* pica_basicP;
};

// The output of each command. The host sets the handles before the command, and reads the contents
// after it.
struct PF_OutData {
    A_u_long my_version;
    PF_Handle global_data;
    A_long num_params;
    PF_Handle sequence_data;
    A_long out_flags;
    A_long out_flags2;
};
