#include "shell/controls/control_configuration.h"

#include <algorithm>
#include <string>

#include "command/suite_table.h"
#include "sdk/pf_suites.h"
#include "shell/controls/control_layout.h"
#include "support/utf.h"

namespace {

std::string_view labelOf(const pbParameter& parameter) {
    for (const pbName* name : {&parameter.aeDisplayName, &parameter.displayName})
        if (!nameText(*name).empty())
            return nameText(*name);
    return nameText(parameter.name);
}

void writeName(PF_ParamDef& definition, std::string_view name) {
    std::fill(std::begin(definition.name), std::end(definition.name), '\0');
    std::copy_n(name.begin(), std::min(name.size(), std::size(definition.name) - 1),
                definition.name);
}

// The label, shortened if necessary, and "[k]".
void writeNumberedName(PF_ParamDef& definition, std::string_view label, std::int32_t k,
                       std::int32_t count) {
    std::string name(utf8Prefix(label, count < 10 ? 28 : 27));
    name.append("[").append(std::to_string(k)).append("]");
    writeName(definition, name);
}

// Passes definitions to the host, up to its first error.
class Configurator {
public:
    Configurator(const PF_InData& inData, PF_ParamDef** params)
        : inData_(inData), params_(params), suites_(inData.pica_basicP),
          suite_(suites_.suite<PF_ParamUtilsSuite1>()) {}

    void configureImage(const ImageNode& image) {
        writeName(*params_[image.slot], nameText(image.name));
        update(image.slot);
    }

    void configureControl(const pbParameter& parameter, std::int32_t k, std::int32_t index) {
        PF_ParamDef& definition = *params_[index];
        const std::int32_t count = controlsOf(parameter);
        if (count == 1)
            writeName(definition, labelOf(parameter));
        else
            writeNumberedName(definition, labelOf(parameter), k, count);
        controlForm(parameter)->configure(definition,
                                          {inData_, parameter, static_cast<std::size_t>(k)});
        update(index);
    }

    PF_Err error() const { return error_; }

private:
    void update(std::int32_t index) {
        if (error_ == PF_Err_NONE)
            error_ = suite_->PF_UpdateParamUI(inData_.effect_ref, index, params_[index]);
    }

    const PF_InData& inData_;
    PF_ParamDef** params_;
    SuiteTable suites_;
    const PF_ParamUtilsSuite1* suite_;
    PF_Err error_ = PF_Err_NONE;
};

} // namespace

PF_Err configureControls(const PF_InData& inData, const pbGraph& graph, PF_ParamDef** params) {
    Configurator configurator(inData, params);
    forEachLayerImage(graph, [&](const ImageNode& image) { configurator.configureImage(image); });
    forEachControl(graph, [&](const pbParameter& parameter, std::int32_t k, std::int32_t index) {
        configurator.configureControl(parameter, k, index);
    });
    return configurator.error();
}
