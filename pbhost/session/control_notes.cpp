#include "pbhost/session/control_notes.h"

#include "pbhost/diagnostics/mapped_file.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/lint/kernel_outline.h"

namespace pbhost {

namespace {

// The name of the parameter's controls.
std::string controlName(const pbParameter& parameter) {
    for (const pbName* name : {&parameter.aeDisplayName, &parameter.displayName})
        if (!nameText(*name).empty())
            return std::string(nameText(*name));
    return std::string(nameText(parameter.name));
}

// The descriptions by the parameters' own names.
using Descriptions = std::map<std::string, std::string>;

Descriptions describedInKernel(std::string_view text) {
    Descriptions found;
    const KernelOutline outline(text);
    forEachBlock(outline, [&](const MetadataBlock& block, const Declarator* declarator) {
        const MetadataEntry* entry = declarator == nullptr ? nullptr : block.entry("description");
        if (entry != nullptr)
            if (const auto quoted = quotedText(outline, *entry))
                found[std::string(declarator->name.text)] = *quoted;
    });
    return found;
}

Descriptions describedInGraph(const XmlOutline& xml) {
    Descriptions found;
    const XmlElement* graph = xml.root("graph");
    if (graph == nullptr)
        return found;
    for (const XmlElement* parameter : xml.children(*graph, "parameter"))
        for (const XmlElement* metadata : xml.children(*parameter, "metadata")) {
            const XmlAttribute* name = parameter->attribute("name");
            const XmlAttribute* key = metadata->attribute("name");
            const XmlAttribute* value = metadata->attribute("value");
            if (name != nullptr && key != nullptr && value != nullptr &&
                key->value == "description")
                found[name->value] = value->value;
        }
    return found;
}

} // namespace

ControlNotes notesOf(hostkit::Host& host, const std::string& file) {
    const EffectFile model(host, file);
    const Descriptions described =
        model.isGraph ? describedInGraph(XmlOutline(model.text)) : describedInKernel(model.text);
    ControlNotes notes;
    for (const pbParameter& parameter :
         model.isGraph ? model.graph.parameters : model.kernel.parameters) {
        const auto found = described.find(std::string(parameter.wholeName));
        if (found != described.end())
            notes.descriptions[controlName(parameter)] = found->second;
    }
    for (const pbVariable& image : model.isGraph ? model.graph.inputs : model.kernel.inputs)
        notes.imageTypes.emplace_back(elementTypeName(image.type));
    return notes;
}

std::string descriptionOf(const ControlNotes& notes, const std::string& controlName) {
    auto found = notes.descriptions.find(controlName);
    if (found == notes.descriptions.end())
        found = notes.descriptions.find(controlName.substr(0, controlName.rfind('[')));
    return found == notes.descriptions.end() ? "" : found->second;
}

} // namespace pbhost
