#include "pbhost/lint/graph_lint.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <unordered_map>

#include "pbhost/diagnostics/wiring.h"
#include "pbhost/lint/value_check.h"
#include "pixelbender/metadata_keys.h"

namespace pbhost {

namespace {

// The elements that the reader takes, and the attributes that it reads of each. It does not read
// the type of metadata, which follows from the name, but many graphs state it.
struct KnownElement {
    std::string_view name;
    std::array<std::string_view, 6> attributes; // empty ones are none
    int required;                               // the first of them must be there
};

constexpr std::array<KnownElement, 8> knownElements = {{
    {"metadata", {"name", "value", "type"}, 2},
    {"parameter", {"name", "type"}, 2},
    {"inputImage", {"name", "type"}, 1},
    {"outputImage", {"name", "type"}, 0},
    {"kernel", {}, 0},
    {"node", {"id", "name", "vendor", "namespace", "version", "clientID"}, 2},
    {"connect", {"fromImage", "fromNode", "fromOutput", "toImage", "toNode", "toInput"}, 0},
    {"evaluateParameters", {}, 0},
}};

class GraphLint {
public:
    GraphLint(const MappedFile& file, DiagnosticList& list)
        : file_(file), graph_(file.file.graph), outline_(file.outline), list_(list) {}

    void run() {
        root_ = outline_.root("graph");
        if (lintXml())
            return;
        if (root_ == nullptr || graph_.nodes.empty())
            return lintNoNodes();
        connects_ = outline_.children(*root_, "connect");
        for (const pbgNodeInfo& node : graph_.nodes)
            kernelsById_.emplace(nameText(node.id), kernelOfNode(graph_, node));
        for (const std::size_t child : root_->children)
            lintElement(outline_.elements[child]);
        lintParameters();
        lintConnects();
        lintIds();
        lintReaders();
        lintWiring();
    }

private:
    Diagnostic& add(Severity severity, const char* rule, const XmlElement* element,
                    std::string message) {
        if (element == nullptr)
            return list_.add(severity, rule, std::move(message));
        return list_.add(severity, rule, element->at, element->name.size(), std::move(message));
    }

    // A warning about an attribute's value, or about the element if it has no such attribute.
    void warnOfValue(const char* rule, const XmlElement& element, std::string_view attribute,
                     std::string message) {
        const XmlAttribute* found = element.attribute(attribute);
        if (found == nullptr)
            add(Severity::Warning, rule, &element, std::move(message));
        else
            list_.add(Severity::Warning, rule, found->valueAt, found->valueLength,
                      std::move(message));
    }

    // Returns true for a fault that explains all others: what follows it is not read, and the rest
    // is no graph.
    bool lintXml() {
        const XmlFault& fault = outline_.fault;
        if (fault.message.empty())
            return false;
        const bool isGraph =
            !graph_.nodes.empty() && hasOutput() && checkWiring(graph_).errors.empty();
        list_.add(isGraph ? Severity::Warning : Severity::Error, "xml", fault.at, fault.length,
                  "XML: " + fault.message + "; what follows may not be read");
        return !isGraph;
    }

    bool hasOutput() const {
        return std::any_of(graph_.connections.begin(), graph_.connections.end(),
                           [](const pbConnection& each) { return each.kind == ToOutputImage; });
    }

    void lintNoNodes() {
        add(Severity::Error, "no-graph", root_,
            root_ == nullptr ? "no node was found; expected XML: <graph ...> ... </graph>"
                             : "no node was found; expected: <node id=\"...\" name=\"KERNEL\"/>");
    }

    void lintElement(const XmlElement& element) {
        const auto known =
            std::find_if(knownElements.begin(), knownElements.end(),
                         [&](const KnownElement& each) { return each.name == element.name; });
        if (known == knownElements.end()) {
            std::vector<std::string_view> names;
            for (const KnownElement& each : knownElements)
                names.push_back(each.name);
            add(Severity::Warning, "unknown-element", &element,
                "the element " + inQuotes(element.name) + " is unknown and not read; " +
                    namesLike(element.name, std::move(names)));
            return;
        }
        for (int i = 0; i < known->required; ++i) {
            const std::string_view name = known->attributes[static_cast<std::size_t>(i)];
            if (element.attribute(name) == nullptr)
                add(Severity::Warning, "missing-attribute", &element,
                    "the attribute " + inQuotes(name) + " of " + inQuotes(element.name) +
                        " is missing");
        }
        lintAttributes(element, *known);
        if (element.name == "metadata")
            lintKey(element, false);
        if (element.name == "kernel" && !element.hasText)
            add(Severity::Warning, "no-kernel", &element,
                "the kernel has no text; expected: <kernel><![CDATA[ ... ]]></kernel>");
    }

    void lintAttributes(const XmlElement& element, const KnownElement& known) {
        std::vector<std::string_view> names;
        for (const std::string_view name : known.attributes)
            if (!name.empty())
                names.push_back(name);
        for (const XmlAttribute& each : element.attributes)
            if (std::find(names.begin(), names.end(), each.name) == names.end())
                list_.add(Severity::Warning, "unknown-attribute", each.at, each.name.size(),
                          "the attribute " + inQuotes(each.name) + " of " + inQuotes(element.name) +
                              " is unknown and not read; " + namesLike(each.name, names));
    }

    void lintKey(const XmlElement& metadata, bool isOfParameter) {
        const XmlAttribute* name = metadata.attribute("name");
        if (name == nullptr)
            return;
        const std::string unknown =
            isOfParameter ? unknownParameterKey(name->value) : unknownProgramKey(name->value);
        if (!unknown.empty())
            warnOfValue("unknown-key", metadata, "name", unknown);
    }

    // The parameters of the model are the elements with a name and a type.
    void lintParameters() {
        std::size_t index = 0;
        std::vector<const XmlElement*> elements;
        for (const XmlElement* element : outline_.children(*root_, "parameter"))
            if (element->attribute("name") != nullptr && element->attribute("type") != nullptr)
                elements.push_back(element);
        for (; index < elements.size() && index < graph_.parameters.size(); ++index)
            lintParameter(*elements[index], graph_.parameters[index]);
        for (const std::size_t without : parametersWithoutControl(graph_.parameters))
            if (without < elements.size())
                warnOfValue("too-many-parameters", *elements[without], "name",
                            "there is no control left for " +
                                inQuotes(graph_.parameters[without].wholeName) +
                                ", the effect has " + controlsFor(graph_.parameters[without]) +
                                "; it keeps its default");
    }

    void lintParameter(const XmlElement& element, const pbParameter& parameter) {
        std::map<std::string_view, const XmlElement*> byKey;
        for (const XmlElement* metadata : outline_.children(element, "metadata")) {
            lintKey(*metadata, true);
            if (const XmlAttribute* name = metadata->attribute("name"))
                byKey[name->value] = metadata;
        }
        for (const auto& [key, metadata] : byKey)
            if (valueField(key) != nullptr)
                lintValue(*metadata, parameter.type);
        for (const ParameterFault& fault : faultsOf(parameter)) {
            const auto found = byKey.find(fault.key);
            if (found != byKey.end())
                warnOfValue(fault.rule, *found->second, "value", fault.message);
            else
                warnOfValue(fault.rule, element, "name", fault.message);
        }
    }

    // A list of numbers with a comma immediately behind each but the last.
    void lintValue(const XmlElement& metadata, pbElementType type) {
        const XmlAttribute* value = metadata.attribute("value");
        const int wanted = componentCount(type);
        if (value == nullptr || wanted == 0)
            return;
        const std::string& text = value->value;
        const std::string name = elementTypeName(type);
        const auto given = 1 + std::count(text.begin(), text.end(), ',');
        if (text.find('(') != std::string::npos || text.find_first_of("\"'") != std::string::npos)
            warnOfValue("value-kind", metadata, "value",
                        "a value of a graph is a list of numbers with commas, without a type and "
                        "parentheses");
        else if (given != wanted)
            warnOfValue("value-count", metadata, "value",
                        "the value has " + std::to_string(given) +
                            (given == 1 ? " number, and " : " numbers, and ") + name + " takes " +
                            std::to_string(wanted));
        else if (text.find(" ,") != std::string::npos)
            warnOfValue("value-kind", metadata, "value",
                        "the value is read only up to the blank in front of a comma");
    }

    void lintConnects() {
        for (const XmlElement* element : connects_) {
            const auto has = [&](const char* name) { return element->attribute(name) != nullptr; };
            if (!has("fromImage") && !has("fromNode"))
                add(Severity::Warning, "missing-attribute", element,
                    "the connection has neither \"fromImage\" nor \"fromNode\"");
            if (!has("toImage") && !has("toNode"))
                add(Severity::Warning, "missing-attribute", element,
                    "the connection has neither \"toImage\" nor \"toNode\"");
        }
        for (std::size_t i = 0; i < graph_.connections.size(); ++i)
            lintOutputOf(i);
    }

    // The engine takes a node's only output by any name, and an output image by any.
    void lintOutputOf(std::size_t index) {
        const pbConnection& connection = graph_.connections[index];
        const XmlElement* element = connectElement(index);
        if (element == nullptr)
            return;
        const std::string_view image = nameText(graph_.output.name);
        if (connection.kind == ToOutputImage && nameText(connection.to) != image)
            warnOfValue("graph-connection", *element, "toImage",
                        "there is no output image " + inQuotes(nameText(connection.to)) +
                            (image.empty() ? "" : "; there is " + inQuotes(image)));
        const std::string_view from = nameText(connection.fromOutput);
        const auto source = kernelsById_.find(nameText(connection.from));
        if (from.empty() || source == kernelsById_.end() || source->second == nullptr)
            return;
        const pbKernelInfo& kernel = *source->second;
        if (nameText(kernel.output.name) != from)
            warnOfValue("graph-connection", *element, "fromOutput",
                        "kernel " + inQuotes(nameText(kernel.name)) + " has no output " +
                            inQuotes(from) + "; there is " +
                            inQuotes(nameText(kernel.output.name)));
    }

    void lintIds() {
        std::set<std::string_view> seen;
        for (std::size_t i = 0; i < graph_.nodes.size(); ++i) {
            const std::string_view id = nameText(graph_.nodes[i].id);
            const XmlElement* element = file_.nodeElement(i);
            if (!seen.insert(id).second && element != nullptr)
                warnOfValue("graph-node", *element, "id",
                            "there is more than one node " + inQuotes(id) +
                                "; connections lead to the first");
        }
    }

    // Nodes whose output nothing reads.
    void lintReaders() {
        std::set<std::string_view> read;
        for (const pbConnection& connection : graph_.connections)
            read.insert(nameText(connection.from));
        if (!hasOutput())
            add(Severity::Error, "graph-output", root_,
                "no connection leads from a node to the output image");
        for (std::size_t i = 0; i < graph_.nodes.size(); ++i)
            if (const std::string_view id = nameText(graph_.nodes[i].id);
                !read.contains(id) && file_.nodeElement(i) != nullptr)
                warnOfValue("graph-node", *file_.nodeElement(i), "id",
                            "nothing reads node " + inQuotes(id));
    }

    const XmlElement* connectElement(std::size_t index) const {
        return index < connects_.size() ? connects_[index] : nullptr;
    }

    void lintWiring() {
        const WiringFaults faults = checkWiring(graph_);
        for (const WiringFault& fault : faults.errors)
            addFault(Severity::Error, fault);
        for (const WiringFault& fault : faults.warnings)
            addFault(Severity::Warning, fault);
    }

    void addFault(Severity severity, const WiringFault& fault) {
        const XmlElement* element = fault.part == GraphPart::Node ? file_.nodeElement(fault.index)
                                    : fault.part == GraphPart::Connection
                                        ? connectElement(fault.index)
                                        : root_;
        add(severity, fault.rule, element, fault.text);
    }

    const MappedFile& file_;
    const pbGraphInfo& graph_;
    const XmlOutline& outline_;
    DiagnosticList& list_;
    const XmlElement* root_ = nullptr;
    std::vector<const XmlElement*> connects_; // in the order of the model's connections
    std::unordered_map<std::string_view, const pbKernelInfo*> kernelsById_; // null: none
};

} // namespace

void lintGraph(const MappedFile& file, DiagnosticList& list) {
    GraphLint(file, list).run();
}

} // namespace pbhost
