#include "pbhost/commands/model_command.h"

#include "pbhost/files/effect_file.h"
#include "pbhost/files/json_text.h"

namespace pbhost {

namespace {

std::string asText(const pbName& name) {
    return std::string(nameText(name));
}

Json asJson(const pbVariable& variable) {
    return {{"type", elementTypeName(variable.type)}, {"name", asText(variable.name)}};
}

template<class Item>
Json asArray(const HostVector<Item>& items, Json (*convert)(const Item&)) {
    Json array = Json::array();
    for (const Item& item : items)
        array.push_back(convert(item));
    return array;
}

Json asJson(pbElementType type, const pbValueSlot& slot) {
    Json value = Json::array();
    const pbScalarKind kind = componentBase(type);
    const auto count = static_cast<std::size_t>(componentCount(type));
    for (std::size_t k = 0; k < count; ++k) {
        if (kind == pbScalarInt)
            value.push_back(slot.value.ints[k]);
        else if (kind == pbScalarFloat)
            value.push_back(slot.value.floats[k]);
        else if (kind == pbScalarBool)
            value.push_back(slot.value.bytes[k] != 0);
    }
    return {{"isSet", slot.isSet}, {"value", value}};
}

Json parameterAsJson(const pbParameter& parameter) {
    Json json = asJson(static_cast<const pbVariable&>(parameter));
    const pbPointDefault& point = parameter.aePointRelativeDefaultValue;
    json["defaultValue"] = asJson(parameter.type, parameter.defaultValue);
    json["minValue"] = asJson(parameter.type, parameter.minValue);
    json["maxValue"] = asJson(parameter.type, parameter.maxValue);
    json["parameterType"] = pbParameterTypeNames[parameter.parameterType];
    json["aeUIControl"] = pbUIControlNames[parameter.aeUIControl];
    json["displayName"] = asText(parameter.displayName);
    json["aeDisplayName"] = asText(parameter.aeDisplayName);
    json["aePointRelativeDefaultValue"] = {{"isSet", point.isSet}, {"x", point.x}, {"y", point.y}};
    json["enumValues"] = std::string(parameter.enumValues.view());
    json["aePopupString"] = std::string(parameter.aePopupString.view());
    return json;
}

Json metadataAsJson(const pbMetadata& metadata) {
    return {{"name", asText(metadata.name)},
            {"languageVersion", metadata.languageVersion},
            {"namespace", asText(metadata.namespaceName)},
            {"vendor", asText(metadata.vendor)},
            {"version", metadata.version},
            {"description", std::string(metadata.description)}};
}

Json kernelAsJson(const pbKernelInfo& kernel) {
    Json json = metadataAsJson(kernel);
    json["inputs"] = asArray<pbVariable>(kernel.inputs, asJson);
    json["output"] = asJson(kernel.output);
    json["dependents"] = asArray<pbVariable>(kernel.dependents, asJson);
    json["parameters"] = asArray<pbParameter>(kernel.parameters, parameterAsJson);
    json["shaderText"] = std::string(kernel.shaderText);
    return json;
}

Json nodeAsJson(const pbgNodeInfo& node) {
    return {{"id", asText(node.id)},
            {"name", asText(node.name)},
            {"vendor", asText(node.vendor)},
            {"namespace", asText(node.namespaceName)},
            {"version", node.version},
            {"clientID", asText(node.clientID)},
            {"evaluateParametersText", std::string(node.evaluateParametersText)},
            {"evaluateParametersCode", std::string(node.evaluateParametersCode)}};
}

Json connectionAsJson(const pbConnection& connection) {
    constexpr std::array<const char*, 4> kinds = {"", "ImageToNode", "NodeToNode", "ToOutputImage"};
    return {{"from", asText(connection.from)},
            {"fromOutput", asText(connection.fromOutput)},
            {"to", asText(connection.to)},
            {"toInput", asText(connection.toInput)},
            {"kind", kinds[connection.kind]}};
}

Json graphAsJson(const pbGraphInfo& graph) {
    Json json = metadataAsJson(graph);
    json["parameters"] = asArray<pbParameter>(graph.parameters, parameterAsJson);
    json["inputs"] = asArray<pbVariable>(graph.inputs, asJson);
    json["output"] = asJson(graph.output);
    json["kernels"] = asArray<pbKernelInfo>(graph.kernels, kernelAsJson);
    json["nodes"] = asArray<pbgNodeInfo>(graph.nodes, nodeAsJson);
    json["connections"] = asArray<pbConnection>(graph.connections, connectionAsJson);
    return json;
}

} // namespace

std::string modelAsJson(const std::string& path) {
    hostkit::Host host;
    const EffectFile model(host, path);
    return jsonText(model.isGraph ? graphAsJson(model.graph) : kernelAsJson(model.kernel));
}

} // namespace pbhost
