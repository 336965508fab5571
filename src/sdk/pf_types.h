// The host's basic records: what it hands to the module with every command.
//
// Only the members that the system uses are declared. The host owns every record here and every
// table behind it; a pointer taken from one is good for the running command and no longer.
#pragma once

#include <cstdint>

using A_long = std::int32_t;
using A_u_longlong = std::uint64_t;

// Result of a command and of most host calls; 0 is success.
using PF_Err = A_long;
inline constexpr PF_Err PF_Err_NONE = 0;
inline constexpr PF_Err PF_Err_OUT_OF_MEMORY = 4;
inline constexpr PF_Err PF_Err_BAD_CALLBACK_PARAM = 516;

// A movable block of host memory: the address of the block stands in the first word behind the
// handle, and is fixed while the handle is locked.
using PF_Handle = void**;

// Commands by their number; only those that have a caller are named.
inline constexpr A_long PF_Cmd_GLOBAL_SETUP = 1;
inline constexpr A_long PF_Cmd_SEQUENCE_SETUP = 5;
inline constexpr A_long PF_Cmd_SMART_RENDER = 24;

// The host's utility callbacks. Sizes are in bytes.
struct PF_UtilCallbacks {
    PF_Handle (*host_new_handle)(A_u_longlong size); // null: out of memory
    void* (*host_lock_handle)(PF_Handle handle);     // the address of the block
    void (*host_unlock_handle)(PF_Handle handle);
    void (*host_dispose_handle)(PF_Handle handle); // also while locked
    A_u_longlong (*host_get_handle_size)(PF_Handle handle);
};

struct SPBasicSuite;

// What the host tells the module at each command.
struct PF_InData {
    PF_UtilCallbacks* utils;
    SPBasicSuite* pica_basicP;
    PF_Handle global_data; // null until global setup has stored one
};
