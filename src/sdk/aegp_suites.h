// The suites of the host's scene, streams, scripts and preferences: one table of functions for each
// name and version, which return an A_Err if not stated otherwise. `plugin` is the id returned at
// registration. Texts are zero-terminated; A_UTF16Char texts are UTF-16; texts in memory handles
// are zero-terminated too.
#pragma once

#include "sdk/aegp_types.h"

struct AEGP_MemorySuite1 {
    static constexpr const char* name = "AEGP Memory Suite";
    static constexpr A_long version = 1;

    A_Err (*AEGP_NewMemHandle)(AEGP_PluginID plugin, const char* what, AEGP_MemSize size,
                               AEGP_MemFlag flags, AEGP_MemHandle* memory);
    A_Err (*AEGP_FreeMemHandle)(AEGP_MemHandle memory); // also while locked
    A_Err (*AEGP_LockMemHandle)(AEGP_MemHandle memory, void** address);
    A_Err (*AEGP_UnlockMemHandle)(AEGP_MemHandle memory);
    A_Err (*AEGP_GetMemHandleSize)(AEGP_MemHandle memory, AEGP_MemSize* size);
    A_Err (*AEGP_ResizeMemHandle)(const char* what, AEGP_MemSize size, AEGP_MemHandle memory);
};

// The preferences: sections of keys. Texts are narrow.
struct AEGP_PersistentDataSuite1 {
    static constexpr const char* name = "AEGP Persistent Data Suite";
    static constexpr A_long version = 1;

    A_Err (*AEGP_GetApplicationBlob)(AEGP_PersistentBlobH* blob);
    A_Err (*AEGP_GetNumSections)(AEGP_PersistentBlobH blob, A_long* count);
    A_Err (*AEGP_GetSectionKeyByIndex)(AEGP_PersistentBlobH blob, A_long index, A_long buffer_size,
                                       char* section);
    A_Err (*AEGP_DoesKeyExist)(AEGP_PersistentBlobH blob, const char* section, const char* key,
                               A_Boolean* exists);
    A_Err (*AEGP_GetNumKeys)(AEGP_PersistentBlobH blob, const char* section, A_long* count);
    A_Err (*AEGP_GetValueKeyByIndex)(AEGP_PersistentBlobH blob, const char* section, A_long index,
                                     A_long buffer_size, char* key);
    // Writes what fits of the text and its terminating zero into the buffer; actual_size is the
    // size of the whole, including the zero. A missing key gives the default; without one the size
    // is 0.
    A_Err (*AEGP_GetString)(AEGP_PersistentBlobH blob, const char* section, const char* key,
                            const char* fallback, A_long buffer_size, char* buffer,
                            A_u_long* actual_size);
    A_Err (*AEGP_GetLong)(AEGP_PersistentBlobH blob, const char* section, const char* key,
                          A_long fallback, A_long* value);
    A_Err (*AEGP_SetString)(AEGP_PersistentBlobH blob, const char* section, const char* key,
                            const char* value);
};

struct AEGP_UtilitySuite11 {
    static constexpr const char* name = "AEGP Utility Suite";
    static constexpr A_long version = 11;

    A_Err (*AEGP_RegisterWithAEGP)(void* refcon, const char* plugin_name, AEGP_PluginID* id);
    A_Err (*AEGP_StartUndoGroup)(const char* group_name);
    A_Err (*AEGP_EndUndoGroup)();
    // The script is UTF-8 unless platform_encoding is set. result and error may be null; the caller
    // frees the handles that they receive, which may be null.
    A_Err (*AEGP_ExecuteScript)(AEGP_PluginID plugin, const char* script,
                                A_Boolean platform_encoding, AEGP_MemHandle* result,
                                AEGP_MemHandle* error);
};

struct AEGP_PFInterfaceSuite1 {
    static constexpr const char* name = "AEGP PF Interface Suite";
    static constexpr A_long version = 1;

    A_Err (*AEGP_GetEffectLayer)(PF_ProgPtr effect, AEGP_LayerH* layer);
    A_Err (*AEGP_GetNewEffectForEffect)(AEGP_PluginID plugin, PF_ProgPtr effect,
                                        AEGP_EffectRefH* reference);
    A_Err (*AEGP_ConvertEffectToCompTime)(PF_ProgPtr effect, A_long what_time, A_u_long time_scale,
                                          A_Time* comp_time);
    A_Err (*AEGP_GetEffectCamera)(PF_ProgPtr effect, const A_Time* comp_time, AEGP_LayerH* camera);
};

struct AEGP_EffectSuite3 {
    static constexpr const char* name = "AEGP Effect Suite";
    static constexpr A_long version = 3;

    A_Err (*AEGP_GetLayerNumEffects)(AEGP_LayerH layer, A_long* count);
    A_Err (*AEGP_GetLayerEffectByIndex)(AEGP_PluginID plugin, AEGP_LayerH layer, A_long index,
                                        AEGP_EffectRefH* effect); // a new reference
    A_Err (*AEGP_GetInstalledKeyFromLayerEffect)(AEGP_EffectRefH effect,
                                                 AEGP_InstalledEffectKey* key);
    A_Err (*AEGP_GetEffectFlags)(AEGP_EffectRefH effect, A_long* flags);
    A_Err (*AEGP_DisposeEffect)(AEGP_EffectRefH effect);
    A_Err (*AEGP_ApplyEffect)(AEGP_PluginID plugin, AEGP_LayerH layer, AEGP_InstalledEffectKey key,
                              AEGP_EffectRefH* effect); // a new reference
    A_Err (*AEGP_GetNumInstalledEffects)(A_long* count);
    A_Err (*AEGP_GetNextInstalledEffect)(AEGP_InstalledEffectKey key,
                                         AEGP_InstalledEffectKey* next); // 0 starts and ends
    A_Err (*AEGP_GetEffectMatchName)(AEGP_InstalledEffectKey key,
                                     char match_name[AEGP_MAX_EFFECT_MATCH_NAME_SIZE]);
};

struct AEGP_StreamSuite9 {
    static constexpr const char* name = "AEGP Stream Suite";
    static constexpr A_long version = 9;

    A_Err (*AEGP_GetNewLayerStream)(AEGP_PluginID plugin, AEGP_LayerH layer, AEGP_LayerStream which,
                                    AEGP_StreamRefH* stream);
    A_Err (*AEGP_GetNewEffectStreamByIndex)(AEGP_PluginID plugin, AEGP_EffectRefH effect,
                                            A_long index, AEGP_StreamRefH* stream);
    A_Err (*AEGP_DisposeStream)(AEGP_StreamRefH stream);
    A_Err (*AEGP_GetStreamName)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                A_Boolean force_english, AEGP_MemHandle* utf16);
    A_Err (*AEGP_GetStreamType)(AEGP_StreamRefH stream, AEGP_StreamType* type);
    A_Err (*AEGP_GetNewStreamValue)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                    AEGP_LTimeMode mode, const A_Time* time,
                                    A_Boolean pre_expression, AEGP_StreamValue2* value);
    A_Err (*AEGP_DisposeStreamValue)(AEGP_StreamValue2* value);
    A_Err (*AEGP_SetStreamValue)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                 AEGP_StreamValue2* value);
    A_Err (*AEGP_GetLayerStreamValue)(AEGP_LayerH layer, AEGP_LayerStream which,
                                      AEGP_LTimeMode mode, const A_Time* time,
                                      A_Boolean pre_expression, AEGP_StreamVal2* value,
                                      AEGP_StreamType* type); // type may be null
    A_Err (*AEGP_GetExpressionState)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                     A_Boolean* is_enabled);
    A_Err (*AEGP_SetExpressionState)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                     A_Boolean is_enabled);
    A_Err (*AEGP_GetExpression)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                AEGP_MemHandle* utf16);
    A_Err (*AEGP_SetExpression)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                const A_UTF16Char* expression);
    A_Err (*AEGP_GetNewMaskOutlineStream)(AEGP_PluginID plugin, AEGP_MaskRefH mask,
                                          AEGP_StreamRefH* stream);
};

// Keyframes count from 0, in the order of their times.
struct AEGP_KeyframeSuite4 {
    static constexpr const char* name = "AEGP Keyframe Suite";
    static constexpr A_long version = 4;

    A_Err (*AEGP_GetStreamNumKFs)(AEGP_StreamRefH stream, A_long* count);
    A_Err (*AEGP_GetKeyframeTime)(AEGP_StreamRefH stream, A_long index, AEGP_LTimeMode mode,
                                  A_Time* time);
    A_Err (*AEGP_InsertKeyframe)(AEGP_StreamRefH stream, AEGP_LTimeMode mode, const A_Time* time,
                                 A_long* index);
    A_Err (*AEGP_DeleteKeyframe)(AEGP_StreamRefH stream, A_long index);
    A_Err (*AEGP_GetNewKeyframeValue)(AEGP_PluginID plugin, AEGP_StreamRefH stream, A_long index,
                                      AEGP_StreamValue2* value);
    A_Err (*AEGP_SetKeyframeValue)(AEGP_StreamRefH stream, A_long index,
                                   const AEGP_StreamValue2* value);
    A_Err (*AEGP_GetKeyframeFlags)(AEGP_StreamRefH stream, A_long index, AEGP_KeyframeFlags* flags);
    A_Err (*AEGP_SetKeyframeFlag)(AEGP_StreamRefH stream, A_long index, AEGP_KeyframeFlags flag,
                                  A_Boolean is_set);
    A_Err (*AEGP_GetKeyframeInterpolation)(AEGP_StreamRefH stream, A_long index,
                                           AEGP_KeyframeInterpolationType* in,
                                           AEGP_KeyframeInterpolationType* out);
    A_Err (*AEGP_SetKeyframeInterpolation)(AEGP_StreamRefH stream, A_long index,
                                           AEGP_KeyframeInterpolationType in,
                                           AEGP_KeyframeInterpolationType out);
    // A batch: indices are those of the batch until it ends; nothing is added unless `add` is set.
    A_Err (*AEGP_StartAddKeyframes)(AEGP_StreamRefH stream, AEGP_AddKeyframesInfoH* batch);
    A_Err (*AEGP_AddKeyframes)(AEGP_AddKeyframesInfoH batch, AEGP_LTimeMode mode,
                               const A_Time* time, A_long* index);
    A_Err (*AEGP_SetAddKeyframe)(AEGP_AddKeyframesInfoH batch, A_long index,
                                 const AEGP_StreamValue2* value);
    A_Err (*AEGP_EndAddKeyframes)(A_Boolean add, AEGP_AddKeyframesInfoH batch);
};

struct AEGP_DynamicStreamSuite5 {
    static constexpr const char* name = "AEGP Dynamic Stream Suite";
    static constexpr A_long version = 5;

    A_Err (*AEGP_GetStreamGroupingType)(AEGP_StreamRefH stream, AEGP_StreamGroupingType* type);
    A_Err (*AEGP_GetNumStreamsInGroup)(AEGP_StreamRefH group, A_long* count);
    A_Err (*AEGP_GetDynamicStreamFlags)(AEGP_StreamRefH stream, AEGP_DynStreamFlag* flags);
    A_Err (*AEGP_SetDynamicStreamFlag)(AEGP_StreamRefH stream, AEGP_DynStreamFlag one_flag,
                                       A_Boolean undoable, A_Boolean set);
    A_Err (*AEGP_GetNewStreamRefByIndex)(AEGP_PluginID plugin, AEGP_StreamRefH group, A_long index,
                                         AEGP_StreamRefH* child);
    A_Err (*AEGP_GetNewStreamRefByMatchname)(AEGP_PluginID plugin, AEGP_StreamRefH group,
                                             const char* match_name, AEGP_StreamRefH* child);
    A_Err (*AEGP_CanAddStream)(AEGP_StreamRefH group, const char* match_name, A_Boolean* can_add);
    A_Err (*AEGP_SetStreamName)(AEGP_StreamRefH stream, const A_UTF16Char* stream_name);
    A_Err (*AEGP_GetNewParentStreamRef)(AEGP_PluginID plugin, AEGP_StreamRefH stream,
                                        AEGP_StreamRefH* parent);
    A_Err (*AEGP_GetMatchName)(AEGP_StreamRefH stream,
                               char match_name[AEGP_MAX_STREAM_MATCH_NAME_SIZE]);
    A_Err (*AEGP_GetStreamIndexInParent)(AEGP_StreamRefH stream, A_long* index);
    A_Err (*AEGP_IsStreamModified)(AEGP_StreamRefH stream, A_Boolean* is_modified);
};

struct AEGP_MarkerSuite2 {
    static constexpr const char* name = "AEGP Marker Suite";
    static constexpr A_long version = 2;

    A_Err (*AEGP_GetMarkerString)(AEGP_PluginID plugin, AEGP_MarkerValP marker,
                                  AEGP_MarkerStringType kind, AEGP_MemHandle* utf16);
};

struct AEGP_LayerSuite12 {
    static constexpr const char* name = "AEGP Layer Suite";
    static constexpr A_long version = 12;

    A_Err (*AEGP_GetCompNumLayers)(AEGP_CompH comp, A_long* count);
    A_Err (*AEGP_GetCompLayerByIndex)(AEGP_CompH comp, A_long index, AEGP_LayerH* layer);
    A_Err (*AEGP_GetLayerFromLayerID)(AEGP_CompH comp, AEGP_LayerIDVal id, AEGP_LayerH* layer);
    A_Err (*AEGP_GetLayerSourceItem)(AEGP_LayerH layer, AEGP_ItemH* item);
    A_Err (*AEGP_GetLayerParentComp)(AEGP_LayerH layer, AEGP_CompH* comp);
    A_Err (*AEGP_GetLayerID)(AEGP_LayerH layer, AEGP_LayerIDVal* id);
    A_Err (*AEGP_GetLayerObjectType)(AEGP_LayerH layer, AEGP_ObjectType* type);
    A_Err (*AEGP_GetLayerCurrentTime)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* time);
    A_Err (*AEGP_GetLayerName)(AEGP_PluginID plugin, AEGP_LayerH layer,
                               AEGP_MemHandle* utf16_layer_name,   // empty: it has the source's
                               AEGP_MemHandle* utf16_source_name); // each may be null
    A_Err (*AEGP_SetLayerName)(AEGP_LayerH layer, const A_UTF16Char* layer_name);
    A_Err (*AEGP_GetLayerFlags)(AEGP_LayerH layer, AEGP_LayerFlags* flags);
    A_Err (*AEGP_SetLayerFlag)(AEGP_LayerH layer, AEGP_LayerFlags one_flag, A_Boolean is_set);
    A_Err (*AEGP_IsLayerVideoReallyOn)(AEGP_LayerH layer, A_Boolean* is_on);
    A_Err (*AEGP_GetLayerInPoint)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* time);
    A_Err (*AEGP_GetLayerDuration)(AEGP_LayerH layer, AEGP_LTimeMode mode, A_Time* duration);
    A_Err (*AEGP_GetLayerToWorldXform)(AEGP_LayerH layer, const A_Time* comp_time,
                                       A_Matrix4* transform);
    A_Err (*AEGP_GetLayerParent)(AEGP_LayerH layer, AEGP_LayerH* parent); // null: none
    A_Err (*AEGP_SetLayerParent)(AEGP_LayerH layer, AEGP_LayerH parent);
};

struct AEGP_CameraSuite2 {
    static constexpr const char* name = "AEGP Camera Suite";
    static constexpr A_long version = 2;

    A_Err (*AEGP_GetCameraType)(AEGP_LayerH camera, AEGP_CameraType* type);
    A_Err (*AEGP_GetDefaultCameraDistanceToImagePlane)(AEGP_CompH comp, A_FpLong* distance);
};

struct AEGP_LightSuite2 {
    static constexpr const char* name = "AEGP Light Suite";
    static constexpr A_long version = 2;

    A_Err (*AEGP_GetLightType)(AEGP_LayerH light, AEGP_LightType* type);
};

struct AEGP_LayerMaskSuite5 {
    static constexpr const char* name = "AEGP Layer Mask Suite";
    static constexpr A_long version = 5;

    A_Err (*AEGP_GetLayerNumMasks)(AEGP_LayerH layer, A_long* count);
    A_Err (*AEGP_GetLayerMaskByIndex)(AEGP_LayerH layer, A_long index,
                                      AEGP_MaskRefH* mask); // a new reference
    A_Err (*AEGP_DisposeMask)(AEGP_MaskRefH mask);
    A_Err (*AEGP_GetMaskID)(AEGP_MaskRefH mask, AEGP_MaskIDVal* id);
};

// An outline is a copy in a stream value. A closed one has as many segments as vertices, an open
// one has one less.
struct AEGP_MaskOutlineSuite3 {
    static constexpr const char* name = "AEGP Mask Outline Suite";
    static constexpr A_long version = 3;

    A_Err (*AEGP_IsMaskOutlineOpen)(AEGP_MaskOutlineValH outline, A_Boolean* is_open);
    A_Err (*AEGP_SetMaskOutlineOpen)(AEGP_MaskOutlineValH outline, A_Boolean is_open);
    A_Err (*AEGP_GetMaskOutlineNumSegments)(AEGP_MaskOutlineValH outline, A_long* count);
    A_Err (*AEGP_GetMaskOutlineVertexInfo)(AEGP_MaskOutlineValH outline, A_long index,
                                           AEGP_MaskVertex* vertex);
    A_Err (*AEGP_SetMaskOutlineVertexInfo)(AEGP_MaskOutlineValH outline, A_long index,
                                           const AEGP_MaskVertex* vertex);
    A_Err (*AEGP_CreateVertex)(AEGP_MaskOutlineValH outline, A_long index); // before that vertex
    A_Err (*AEGP_DeleteVertex)(AEGP_MaskOutlineValH outline, A_long index);
};

// A document is a copy in a stream value.
struct AEGP_TextDocumentSuite1 {
    static constexpr const char* name = "AEGP Text Document Suite";
    static constexpr A_long version = 1;

    A_Err (*AEGP_GetNewText)(AEGP_PluginID plugin, AEGP_TextDocumentH document,
                             AEGP_MemHandle* utf16);
    A_Err (*AEGP_SetText)(AEGP_TextDocumentH document, const A_UTF16Char* text,
                          A_long length); // UTF-16 units; no terminating zero needed
};

struct AEGP_ItemSuite13 {
    static constexpr const char* name = "AEGP Item Suite";
    static constexpr A_long version = 13;

    A_Err (*AEGP_GetItemName)(AEGP_PluginID plugin, AEGP_ItemH item, AEGP_MemHandle* utf16);
    A_Err (*AEGP_GetItemDimensions)(AEGP_ItemH item, A_long* width, A_long* height);
    A_Err (*AEGP_GetItemPixelAspectRatio)(AEGP_ItemH item, A_Ratio* ratio);
};

struct AEGP_CompSuite11 {
    static constexpr const char* name = "AEGP Comp Suite";
    static constexpr A_long version = 11;

    A_Err (*AEGP_GetItemFromComp)(AEGP_CompH comp, AEGP_ItemH* item);
    A_Err (*AEGP_GetCompFramerate)(AEGP_CompH comp, A_FpLong* frames_per_second);
    A_Err (*AEGP_SetCompFramerate)(AEGP_CompH comp, const A_FpLong* frames_per_second);
};
