#include "pbhost/reports.h"

#include "support/report.h"

namespace pbhost {

namespace {

std::vector<std::string> infoTexts;
std::vector<std::string> errorTexts;

} // namespace

Reports::Reports() {
    infoTexts.clear();
    errorTexts.clear();
    setReportHandler([](const char* text) { infoTexts.emplace_back(text); }, ChannelInfo);
    setReportHandler([](const char* text) { errorTexts.emplace_back(text); }, ChannelErrorLog);
}

Reports::~Reports() {
    setReportHandler(nullptr, ChannelInfo);
    setReportHandler(nullptr, ChannelErrorLog);
}

const std::vector<std::string>& Reports::info() const {
    return infoTexts;
}

const std::vector<std::string>& Reports::errorLog() const {
    return errorTexts;
}

} // namespace pbhost
