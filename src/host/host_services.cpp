#include "host/host_services.h"

#include "host/suite_holder.h"
#include "sdk/aegp_suites.h"
#include "sdk/pf_suites.h"

PF_Err startUndoGroup(SPBasicSuite* basic, const char* name) {
    return callSuite(basic, &AEGP_UtilitySuite11::AEGP_StartUndoGroup, name);
}

PF_Err endUndoGroup(SPBasicSuite* basic) {
    return callSuite(basic, &AEGP_UtilitySuite11::AEGP_EndUndoGroup);
}

PF_Err infoPanel2(SPBasicSuite* basic, const char* line1, const char* line2) {
    return callSuite(basic, &PF_AdvAppSuite1::PF_InfoDrawText, line1, line2);
}

PF_Err infoPanel3(SPBasicSuite* basic, const char* line1, const char* line2, const char* line3) {
    return callSuite(basic, &PF_AdvAppSuite1::PF_InfoDrawText3, line1, line2, line3);
}

PF_Err setOptionsButtonName(const PF_InData* inData, const char* name) {
    callSuite(inData->pica_basicP, &PF_EffectUISuite1::PF_SetOptionsButtonName, inData->effect_ref,
              name);
    return PF_Err_NONE;
}
