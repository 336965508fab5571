// Lights, and the texts that stream values hold.
#include "hostkit/memory_handles.h"
#include "hostkit/scene_call.h"
#include "hostkit/suite_tables.h"

namespace hostkit::tables {

namespace {

A_Err getLightType(AEGP_LayerH light, AEGP_LightType* type) {
    return serve<AEGP_LightSuite2>("AEGP_GetLightType", [&](const SceneCall& call) {
        const Layer& found = call.layer(light);
        if (found.type != AEGP_ObjectType_LIGHT)
            call.refuse("a layer that is no light");
        call.at(type) = found.lightType;
    });
}

TextDocument& document(const SceneCall& call, AEGP_TextDocumentH handle) {
    const std::shared_ptr<TextDocument> found = references::find(handle, call.name);
    if (found == nullptr)
        throw Refusal{PF_Err_BAD_CALLBACK_PARAM};
    return *found; // the value that is out keeps it
}

A_Err getNewText(AEGP_PluginID plugin, AEGP_TextDocumentH handle, AEGP_MemHandle* utf16) {
    return serve<AEGP_TextDocumentSuite1>("AEGP_GetNewText", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& lent = call.at(utf16);
        lent = lendText(document(call, handle).text);
    });
}

A_Err setText(AEGP_TextDocumentH handle, const A_UTF16Char* text, A_long length) {
    return serve<AEGP_TextDocumentSuite1>("AEGP_SetText", [&](const SceneCall& call) {
        const A_UTF16Char& start = call.at(text);
        if (length < 0)
            call.refuse("a text of less than no length");
        document(call, handle).text.assign(&start, static_cast<std::size_t>(length));
    });
}

} // namespace

const AEGP_LightSuite2& lightSuite() {
    static const AEGP_LightSuite2 table = {getLightType};
    return table;
}

const AEGP_TextDocumentSuite1& textDocumentSuite() {
    static const AEGP_TextDocumentSuite1 table = {getNewText, setText};
    return table;
}

} // namespace hostkit::tables
