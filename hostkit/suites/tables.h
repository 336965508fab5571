// The function tables of the host's suites, one accessor each. Every function of every table starts
// with calls::enter and keeps the ledger.
#pragma once

#include "sdk/aegp_suites.h"
#include "sdk/pf_suites.h"

namespace hostkit::tables {

const AEGP_MemorySuite1& memorySuite();
const AEGP_PersistentDataSuite1& persistentDataSuite();
const AEGP_UtilitySuite11& utilitySuite();
const AEGP_PFInterfaceSuite1& interfaceSuite();
const AEGP_EffectSuite3& effectSuite();
const AEGP_StreamSuite9& streamSuite();
const AEGP_KeyframeSuite4& keyframeSuite();
const AEGP_DynamicStreamSuite5& dynamicStreamSuite();
const AEGP_MarkerSuite2& markerSuite();
const AEGP_LayerSuite12& layerSuite();
const AEGP_CameraSuite2& cameraSuite();
const AEGP_LightSuite2& lightSuite();
const AEGP_LayerMaskSuite5& layerMaskSuite();
const AEGP_MaskOutlineSuite3& maskOutlineSuite();
const AEGP_TextDocumentSuite1& textDocumentSuite();
const AEGP_ItemSuite13& itemSuite();
const AEGP_CompSuite11& compSuite();
const PF_ParamUtilsSuite1& paramUtilsSuite();
const PF_WorldSuite2& worldSuite();
const PF_AdvAppSuite1& advAppSuite();
const PF_EffectUISuite1& effectUiSuite();

// A function of the stream suite, implemented in layer_mask_suite.cpp.
A_Err getNewMaskOutlineStream(AEGP_PluginID plugin, AEGP_MaskRefH mask, AEGP_StreamRefH* stream);

// Value for PF_InData::inter.
const PF_InteractCallbacks& interactCallbacks();

} // namespace hostkit::tables
