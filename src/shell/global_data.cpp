#include "shell/global_data.h"

#include <GL/glew.h>

#include "command/suite_table.h"
#include "sdk/aegp_suites.h"
#include "shell/commands.h"
#include "shell/instance/report_handlers.h"
#include "support/report.h"

namespace {

const char* driverText(GLenum name) {
    return reinterpret_cast<const char*>(glGetString(name));
}

// Without a screen there is no GLX, and glewInit fails after it has loaded everything.
bool isLoaded(GLenum error) {
#ifdef GLEW_ERROR_NO_GLX_DISPLAY
    if (error == GLEW_ERROR_NO_GLX_DISPLAY)
        return driverText(GL_VERSION) != nullptr;
#endif
    return error == GLEW_OK;
}

void startGlew(const Device& device) {
    const ContextSwitch inContext(device);
    const GLenum error = glewInit();
    if (!isLoaded(error)) {
        _printf("Error: %s\n", reinterpret_cast<const char*>(glewGetErrorString(error)));
        return;
    }
    _printf("GLEW initialized\n");
    for (const GLenum name : {GL_VENDOR, GL_RENDERER, GL_VERSION})
        if (const char* text = driverText(name))
            _printf("OpenGL: %s\n", text);
}

} // namespace

GlobalData::GlobalData(const PF_InData& inData) {
    SuiteTable suites(inData.pica_basicP);
    suites.suite<AEGP_UtilitySuite11>()->AEGP_RegisterWithAEGP(nullptr, pluginName, &pluginId);
    startGlew(device);
}

GlobalData::~GlobalData() {
    for (GraphCacheEntry& entry : graphCache) {
        const ContextSwitch inContext(device);
        entry.graph.reset();
    }
}

GlobalData& globalDataOf(const PF_InData& inData) {
    GlobalData* globalData = objectIn<GlobalData>(inData.global_data);
    if (globalData == nullptr)
        throw static_cast<long>(PF_Err_INTERNAL_STRUCT_DAMAGED);
    return *globalData;
}

PF_Err GlobalSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef** /*params*/,
                   PF_LayerDef* /*output*/) {
    out_data->my_version = pluginVersion;
    out_data->out_flags = pluginOutFlags;
    out_data->out_flags2 = pluginOutFlags2;
    auto globalData = makeObject<GlobalData>(*in_data);
    installReportHandlers();
    const ContextSwitch inContext(globalData->device);
    globalData->glVendor = driverText(GL_VENDOR);
    globalData->glVersion = driverText(GL_VERSION);
    globalData->glslVersion = driverText(GL_SHADING_LANGUAGE_VERSION);
    out_data->global_data = handleOf(globalData.release());
    return PF_Err_NONE;
}

PF_Err GlobalSetdown(PF_InData* in_data) {
    delete objectIn<GlobalData>(in_data->global_data);
    return PF_Err_NONE;
}
