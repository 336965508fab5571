#include "shell/instance/report_handlers.h"

#include "command/command_scope.h"
#include "host/info_print.h"
#include "shell/global_data.h"
#include "support/report.h"

namespace {

std::uint64_t infoMessages = 0;

void ignore(const char* /*text*/) {}

void showOnInfoPanel(const char* text) {
    const PF_InData* inData = currentInData();
    if (inData == nullptr)
        return;
    ++infoMessages;
    dprintf(inData->pica_basicP, "%s", text);
}

void appendToErrorLog(const char* text) {
    const PF_InData* inData = currentInData();
    if (inData == nullptr)
        return;
    if (GlobalData* globalData = objectIn<GlobalData>(inData->global_data))
        globalData->errorLog.append(text);
}

} // namespace

void installReportHandlers() {
    setReportHandler(ignore, ChannelTrace);
    setReportHandler(showOnInfoPanel, ChannelInfo);
    setReportHandler(appendToErrorLog, ChannelErrorLog);
}

std::uint64_t infoMessageCount() {
    return infoMessages;
}
