#include "pbhost/live/child/control_facts.h"

#include "hostkit/effect/control_kinds.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/session/control_list.h"

namespace pbhost::live {

namespace {

Json rangeJson(double low, double high) {
    return {static_cast<float>(low), static_cast<float>(high)};
}

// The range of the slider, which can be narrower than that of typed values.
Json sliderRange(const PF_ParamDef& definition) {
    const PF_ParamDefUnion& u = definition.u;
    if (definition.param_type == PF_Param_SLIDER)
        return rangeJson(u.sd.slider_min, u.sd.slider_max);
    if (definition.param_type == PF_Param_FIX_SLIDER)
        return rangeJson(u.fs_d.slider_min / fixedOne, u.fs_d.slider_max / fixedOne);
    return nullptr;
}

Json label(const PF_ParamDef& definition) {
    return definition.param_type == PF_Param_CHECKBOX ? Json(definition.u.bd.u.nameptr) : Json();
}

Json metadata(const pbMetadata& data) {
    return {{"name", nameText(data.name)},
            {"vendor", nameText(data.vendor)},
            {"version", data.version},
            {"description", std::string(data.description.c_str())}};
}

} // namespace

Json controlFacts(const Scene& scene, std::size_t index, const ControlNotes& notes) {
    const PF_ParamDef& definition = scene.effect.definitions.at(index);
    const hostkit::ControlKind& kind = hostkit::kindOf(definition);
    Json facts = controlAsJson(scene.effect, index, 0);
    if (const auto range = kind.range == nullptr ? std::nullopt : kind.range(definition.u))
        facts["range"] = rangeJson(range->low, range->high);
    facts["slider"] = sliderRange(definition);
    facts["label"] = label(definition);
    facts["description"] = descriptionOf(notes, nameOf(scene.effect, index));
    return facts;
}

Json aboutFile(hostkit::Host& host, const std::string& file) {
    const EffectFile model(host, file);
    return model.isGraph ? metadata(model.graph) : metadata(model.kernel);
}

} // namespace pbhost::live
