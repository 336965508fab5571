#include "pixelbender/graph_reader.h"

#include <tinyxml.h>

#include <algorithm>

#include "pixelbender/metadata_keys.h"
#include "pixelbender/pbk_parser.h"
#include "pixelbender/xml_guard.h"
#include "support/numbers.h"

namespace {

// The attribute's text; null if it is absent.
const char* attribute(const TiXmlElement& element, const char* name) {
    return element.Attribute(name);
}

std::string_view attributeText(const TiXmlElement& element, const char* name) {
    const char* text = attribute(element, name);
    return text == nullptr ? std::string_view() : text;
}

std::int32_t attributeInteger(const TiXmlElement& element, const char* name,
                              std::int32_t otherwise) {
    const char* text = attribute(element, name);
    if (text != nullptr)
        scanInteger(text, otherwise);
    return otherwise;
}

// The content of an element whose first child is text; null otherwise.
const char* textContent(const TiXmlElement& element) {
    const TiXmlNode* child = element.FirstChild();
    const TiXmlText* text = child == nullptr ? nullptr : child->ToText();
    return text == nullptr ? nullptr : text->Value();
}

template<class Action>
void forEachChild(const TiXmlElement& parent, const char* name, Action action) {
    for (const TiXmlElement* child = parent.FirstChildElement(name); child != nullptr;
         child = child->NextSiblingElement(name))
        action(*child);
}

void readMetadata(const TiXmlElement& element, pbGraphInfo& info) {
    const std::string_view key = attributeText(element, "name");
    if (key == versionKey)
        info.version = attributeInteger(element, "value", 1);
    else if (const auto set = programTextSetter(key))
        set(info, attributeText(element, "value"));
}

void readParameterMetadata(const TiXmlElement& element, pbParameter& parameter) {
    const std::string_view key = attributeText(element, "name");
    const char* value = attribute(element, "value");
    if (key == pointDefaultKey) {
        const pbValue point = parseValueText(value, pbTypeFloat2);
        parameter.aePointRelativeDefaultValue = {true, point.floats[0], point.floats[1]};
    } else if (const auto field = valueField(key)) {
        parameter.*field = {true, parseValueText(value, parameter.type)};
    } else if (const auto set = parameterTextSetter(key)) {
        set(parameter, attributeText(element, "value"));
    }
}

pbVariable readVariable(const TiXmlElement& element) {
    return {elementTypeFromName(attribute(element, "type")), attributeText(element, "name")};
}

void readParameter(const TiXmlElement& element, pbGraphInfo& info) {
    if (attribute(element, "name") == nullptr || attribute(element, "type") == nullptr)
        return;
    pbParameter& parameter = info.parameters.emplace_back();
    static_cast<pbVariable&>(parameter) = readVariable(element);
    forEachChild(element, "metadata",
                 [&](const TiXmlElement& metadata) { readParameterMetadata(metadata, parameter); });
}

void readNode(const TiXmlElement& element, pbGraphInfo& info) {
    pbgNodeInfo& node = info.nodes.emplace_back();
    copyName(node.id, attribute(element, "id"));
    copyName(node.name, attribute(element, "name"));
    copyName(node.namespaceName, attribute(element, "namespace"));
    copyName(node.vendor, attribute(element, "vendor"));
    copyName(node.clientID, attribute(element, "clientID"));
    node.version = attributeInteger(element, "version", 1);
    const TiXmlElement* expressions = element.FirstChildElement("evaluateParameters");
    const char* text = expressions == nullptr ? nullptr : textContent(*expressions);
    if (text != nullptr)
        node.evaluateParametersText = text;
}

void readConnection(const TiXmlElement& element, pbGraphInfo& info) {
    pbConnection& connection = info.connections.emplace_back();
    const char* fromImage = attribute(element, "fromImage");
    const char* toImage = attribute(element, "toImage");
    if (fromImage != nullptr) {
        copyName(connection.from, fromImage);
    } else {
        copyName(connection.from, attribute(element, "fromNode"));
        copyName(connection.fromOutput, attribute(element, "fromOutput"));
    }
    if (toImage != nullptr) {
        copyName(connection.to, toImage);
        connection.kind = ToOutputImage;
    } else {
        copyName(connection.to, attribute(element, "toNode"));
        copyName(connection.toInput, attribute(element, "toInput"));
        connection.kind = fromImage != nullptr ? ImageToNode : NodeToNode;
    }
}

void readGraph(const TiXmlElement& graph, pbGraphInfo& info) {
    copyName(info.name, attribute(graph, "name"));
    info.languageVersion = attributeInteger(graph, "languageVersion", 1);
    forEachChild(graph, "metadata", [&](const TiXmlElement& e) { readMetadata(e, info); });
    forEachChild(graph, "parameter", [&](const TiXmlElement& e) { readParameter(e, info); });
    forEachChild(graph, "inputImage",
                 [&](const TiXmlElement& e) { info.inputs.push_back(readVariable(e)); });
    if (const TiXmlElement* output = graph.FirstChildElement("outputImage"); output != nullptr)
        info.output = readVariable(*output);
    forEachChild(graph, "kernel", [&](const TiXmlElement& e) {
        if (const char* text = textContent(e); text != nullptr)
            info.kernelSources.emplace_back(text);
    });
    forEachChild(graph, "node", [&](const TiXmlElement& e) { readNode(e, info); });
    forEachChild(graph, "connect", [&](const TiXmlElement& e) { readConnection(e, info); });
}

} // namespace

int readGraphText(std::string_view text, pbGraphInfo& info) {
    TiXmlDocument document;
    // Disables the counting of rows and columns, which is not needed and can hang on invalid text.
    document.SetTabSize(0);
    if (isWithinXmlLimits(text)) {
        // TinyXML reads past the end of a text that ends inside a UTF-8 sequence; the line ends pad
        // it.
        const std::string padded = std::string(text.substr(0, text.find('\0'))) + "\n\n\n\n";
        document.Parse(padded.c_str(), nullptr, TIXML_ENCODING_UTF8);
    }
    return readGraphDocument(document, info);
}

int readGraphDocument(const TiXmlDocument& document, pbGraphInfo& info) {
    const TiXmlNode* child = document.FirstChild("graph");
    const TiXmlElement* graph = child == nullptr ? nullptr : child->ToElement();
    if (graph == nullptr)
        return 1;
    readGraph(*graph, info);
    info.parseContents();
    return 0;
}

void pbGraphInfo::parseContents() {
    kernels.clear();
    kernels.resize(kernelSources.size());
    for (std::size_t i = 0; i < kernelSources.size(); ++i)
        PBKParser(kernelSources[i], kernels[i]).parseKernel();
    sortedParameterNames_.clear();
    for (const pbParameter& parameter : parameters)
        sortedParameterNames_.emplace_back(parameter.wholeName);
    std::sort(sortedParameterNames_.begin(), sortedParameterNames_.end());
    for (pbgNodeInfo& node : nodes)
        node.parse(*this);
}

bool pbGraphInfo::hasParameter(std::string_view parameterName) const {
    return std::binary_search(sortedParameterNames_.begin(), sortedParameterNames_.end(),
                              parameterName);
}
