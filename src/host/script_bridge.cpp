#include "host/script_bridge.h"

#include <array>

#include "host/memory.h"
#include "support/jst.h"

namespace {

struct Escape {
    const char* character;
    const char* replacement;
};

// In this order: backslashes that later escapes insert must not be doubled.
constexpr std::array<Escape, 11> escapes = {{{"\\", "\\\\"},
                                             {"\a", ""},
                                             {"\b", "\\b"},
                                             {"\f", "\\f"},
                                             {"\n", "\\n"},
                                             {"\r", "\\r"},
                                             {"\t", "\\t"},
                                             {"\v", "\\v"},
                                             {"?", "\\?"},
                                             {"\"", "\\\""},
                                             {"'", "\\'"}}};

const char* literal(bool value) {
    return value ? "true" : "false";
}

// The script's result as text; empty if it fails.
NarrowString resultOf(SPBasicSuite* basic, const NarrowString& script) {
    AEGP_MemHandle result = nullptr;
    runScript(basic, script.c_str(), false, &result, nullptr);
    return AEO::readText(basic, result);
}

} // namespace

PF_Err runScript(SPBasicSuite* basic, const char* script, bool isPlatformEncoding,
                 AEGP_MemHandle* result, AEGP_MemHandle* error) {
    if (result != nullptr)
        *result = nullptr;
    if (error != nullptr)
        *error = nullptr;
    return callSuite(basic, &AEGP_UtilitySuite11::AEGP_ExecuteScript, currentPluginId, script,
                     A_Boolean{isPlatformEncoding}, result, error);
}

NarrowString scriptEscape(const char* text) {
    _JST::String<aeAllocator> escaped(text);
    for (const Escape& escape : escapes)
        escaped = escaped.split(escape.character).join(escape.replacement);
    return escaped.text();
}

void alertBox(SPBasicSuite* basic, const char* message, const char* title, bool isError) {
    NarrowString script = "alert(\"";
    script.append(scriptEscape(message)).append("\",\"").append(scriptEscape(title));
    script.append("\",").append(literal(isError)).append(");");
    runScript(basic, script.c_str(), false, nullptr, nullptr);
}

bool confirmBox(SPBasicSuite* basic, const char* title, const char* message, bool isNoDefault) {
    NarrowString script = "confirm(\"";
    script.append(scriptEscape(message)).append("\",").append(literal(isNoDefault));
    script.append(",\"").append(scriptEscape(title)).append("\");");
    AEGP_MemHandle result = nullptr;
    AEGP_MemHandle error = nullptr;
    runScript(basic, script.c_str(), false, &result, &error);
    const AEO::Memory errorText(basic, error); // only to free it
    return AEO::readText(basic, result) == "true";
}

bool openFileDialog(SPBasicSuite* basic, const char* prompt, const char* filter,
                    NarrowString& path) {
    NarrowString script = "function main(){var file = File.openDialog(\"";
    script.append(scriptEscape(prompt)).append("\",\"").append(filter);
    script.append("\");if(file != null){return file.fsName;}else{return \"\";}}main();");
    path = resultOf(basic, script);
    return !path.empty();
}

bool selectFolderDialog(SPBasicSuite* basic, const char* prompt, NarrowString& path) {
    NarrowString script = "function main(){var folder = Folder.selectDialog(\"";
    script.append(scriptEscape(prompt));
    script.append("\"); if(folder != null){return folder.fsName;}else{return \"\";}}main();");
    path = resultOf(basic, script);
    return !path.empty() && path != "null";
}
