#include "hostkit/services/info_panel.h"

#include <initializer_list>
#include <utility>

#include "hostkit/calls/call_frame.h"
#include "hostkit/host.h"
#include "hostkit/suites/tables.h"

namespace hostkit {

void InfoPanel::show(Lines lines) {
    for (std::string& line : lines)
        line.erase(line.find_last_not_of("\r\n") + 1);
    messages_.push_back(lines);
    if (onMessage)
        onMessage(lines);
}

namespace tables {

namespace {

A_Err drawText(const char* call, std::initializer_list<const char*> texts) {
    return contractCall<PF_AdvAppSuite1>(call, [&] {
        if (*texts.begin() == nullptr)
            return misuse(call, "without a first line");
        InfoPanel::Lines lines;
        std::size_t used = 0; // without empty lines at the end
        for (const char* text : texts) {
            lines.emplace_back(text == nullptr ? "" : text);
            if (text != nullptr)
                used = lines.size();
        }
        lines.resize(used);
        Host::current().infoPanel.show(std::move(lines));
        return PF_Err_NONE;
    });
}

PF_Err infoDrawText(const char* line1, const char* line2) {
    return drawText("PF_InfoDrawText", {line1, line2});
}

PF_Err infoDrawText3(const char* line1, const char* line2, const char* line3) {
    return drawText("PF_InfoDrawText3", {line1, line2, line3});
}

} // namespace

const PF_AdvAppSuite1& advAppSuite() {
    static const PF_AdvAppSuite1 table = {infoDrawText, infoDrawText3};
    return table;
}

} // namespace tables

} // namespace hostkit
