#include "shell/instance/error_log_export.h"

#include "host/host_services.h"
#include "host/script_bridge.h"
#include "shell/global_data.h"
#include "support/files.h"
#include "support/outcome_texts.h"

namespace {

const char* orDash(const char* text) {
    return text != nullptr ? text : "-";
}

_JST::String<aeAllocator> logFileText(const GlobalData& globalData) {
    const std::array<const char*, errorLogHeading.size()> facts = {"", orDash(globalData.glVendor),
                                                                   orDash(globalData.glVersion),
                                                                   orDash(globalData.glslVersion)};
    _JST::String<aeAllocator> text;
    for (std::size_t line = 0; line < facts.size(); ++line)
        text.append(errorLogHeading[line]).append(facts[line]).append("\n");
    text.append(globalData.errorLog.c_str());
    return text;
}

bool writeLogFile(const NarrowString& path, const _JST::String<aeAllocator>& text) {
    _JST::File<aeAllocator> file{_JST::String<aeAllocator>(path.c_str())};
    if (!file.open('w'))
        return false;
    const bool isWritten = file.write(text);
    return file.close() && isWritten;
}

bool isWanted(SPBasicSuite* basic, const GlobalData& globalData) {
    return !globalData.errorLog.empty() &&
           confirmBox(basic, "Tvelmarondine", "Tvelmarondine has error log.\nDo you export this?",
                      true);
}

} // namespace

void offerErrorLog(const PF_InData& inData) {
    GlobalData& globalData = globalDataOf(inData);
    SPBasicSuite* basic = inData.pica_basicP;
    if (!isWanted(basic, globalData)) {
        // The host needs a first line that is not null.
        const char* version = globalData.glVersion != nullptr ? globalData.glVersion : "";
        infoPanel3(basic, version, globalData.glslVersion, noErrorLog);
        return;
    }
    alertBox(basic, "Please select where export log", "TVM exports log", false);
    NarrowString path;
    if (!selectFolderDialog(basic, "Select where export log", path))
        return;
    path.append(errorLogFile);
    const _JST::String<aeAllocator> text = logFileText(globalData);
    const std::size_t exported = globalData.errorLog.size();
    if (!writeLogFile(path, text)) {
        alertBox(basic, "Log file has failed to export.\nTry other folder.", exportFailedTitle,
                 false);
        return;
    }
    alertBox(basic,
             "Log file has been exported. (Tvelmarondine_log.txt) \n"
             "Please send it, with the Pixel Bender file, to support@holmvarden.example",
             exportedTitle, false);
    // Messages that were added during the dialog are not in the file and stay in the log.
    globalData.errorLog.erase(0, exported);
}
