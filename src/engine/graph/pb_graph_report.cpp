// Describes a graph: a short text for the user, a dump for the developer.

#include <charconv>

#include "engine/graph/pb_graph.h"
#include "support/report.h"

namespace {

void appendInteger(NarrowString& text, std::int32_t number) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    text.append(digits.begin(), end);
}

// Six decimals. The largest float has 39 digits in front of the point.
void appendFloat(NarrowString& text, float number) {
    std::array<char, 64> digits{};
    const auto end =
        std::to_chars(digits.begin(), digits.end(), number, std::chars_format::fixed, 6).ptr;
    text.append(digits.begin(), end);
}

void appendComponent(NarrowString& text, pbScalarKind kind, const pbValue& value, std::size_t k) {
    if (kind == pbScalarInt)
        appendInteger(text, value.ints[k]);
    else if (kind == pbScalarFloat)
        appendFloat(text, value.floats[k]);
    else if (kind == pbScalarBool)
        text += value.bytes[k] != 0 ? "true" : "false";
}

void appendSlot(NarrowString& text, const char* title, pbElementType type,
                const pbValueSlot& slot) {
    text.append(title).append(":(");
    const pbScalarKind kind = componentBase(type);
    const int count = componentCount(type);
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
        appendComponent(text, kind, slot.value, k);
        text += ", ";
    }
    text += ")\n";
}

std::string_view orDash(std::string_view text) {
    return text.empty() ? "-" : text;
}

} // namespace

void pbGraph::buildInfoText(const pbMetadata& metadata, const char* heading) {
    infoText.append(heading).append(orDash(nameText(metadata.name))).append("\nversion : ");
    appendInteger(infoText, metadata.version);
    infoText.append("\nVendor : ").append(orDash(nameText(metadata.vendor))).append("\n\n");
    infoText.append(metadata.description);
}

void pbGraph::reportGraph() const {
    NarrowString text("graph : ");
    text.append(name).append("\nnodes:\n");
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        text += '\t';
        appendInteger(text, static_cast<std::int32_t>(i));
        text.append(nodes[i]->isKernel() ? " Node:" : " ImageNode:");
        text.append(nameText(nodes[i]->name)).append("\n");
    }
    text += "parameters:\n";
    reportMessage(text.c_str(), ChannelTrace);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        NarrowString index("index:");
        appendInteger(index, static_cast<std::int32_t>(i));
        index += '\n';
        reportMessage(index.c_str(), ChannelTrace);
        reportParameter(*parameters[i]);
    }
}

void reportParameter(const GraphParameter& graphParameter) {
    const pbParameter& parameter = graphParameter.parameter;
    NarrowString text("param : ");
    text.append(nameText(parameter.name)).append("\ntype : ");
    text.append(elementTypeName(parameter.type)).append("\n");
    appendSlot(text, "defaultValue", parameter.type, parameter.defaultValue);
    appendSlot(text, "minValue", parameter.type, parameter.minValue);
    appendSlot(text, "maxValue", parameter.type, parameter.maxValue);
    reportMessage(text.c_str(), ChannelTrace);
}
