// Suite for text documents in stream values.
#include "hostkit/calls/memory_handles.h"
#include "hostkit/calls/scene_call.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

TextDocument& document(const SceneCall& call, AEGP_TextDocumentH handle) {
    const std::shared_ptr<TextDocument> found = references::find(handle, call.name);
    if (found == nullptr)
        throw CallFailure{PF_Err_BAD_CALLBACK_PARAM};
    return *found; // owned by the acquired value
}

A_Err getNewText(AEGP_PluginID plugin, AEGP_TextDocumentH handle, AEGP_MemHandle* utf16) {
    return serve<AEGP_TextDocumentSuite1>("AEGP_GetNewText", plugin, [&](const SceneCall& call) {
        AEGP_MemHandle& result = call.at(utf16);
        result = newTextHandle(document(call, handle).text);
    });
}

A_Err setText(AEGP_TextDocumentH handle, const A_UTF16Char* text, A_long length) {
    return serve<AEGP_TextDocumentSuite1>("AEGP_SetText", [&](const SceneCall& call) {
        const A_UTF16Char& start = call.at(text);
        if (length < 0)
            call.fail("a negative text length");
        document(call, handle).text.assign(&start, static_cast<std::size_t>(length));
    });
}

} // namespace

const AEGP_TextDocumentSuite1& textDocumentSuite() {
    static const AEGP_TextDocumentSuite1 table = {getNewText, setText};
    return table;
}

} // namespace hostkit::tables
