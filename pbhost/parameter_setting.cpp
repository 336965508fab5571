#include "pbhost/parameter_setting.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

#include "pbhost/failure.h"

namespace pbhost {

namespace {

// How a parameter's value reaches the program: the control counts before the type.
struct ValueForm {
    pbScalarKind kind;
    int count;
};

ValueForm formOf(const pbParameter& parameter) {
    switch (parameter.aeUIControl) {
    case pbControlPopup:
        return {pbScalarInt, 1};
    case pbControlAngle:
    case pbControlPercentSlider:
    case pbControlOneChannelColor:
        return {pbScalarFloat, 1};
    case pbControlPoint:
        return {pbScalarFloat, 2};
    case pbControlColor:
        return {pbScalarFloat, componentCount(parameter.type)};
    case pbControlNone:
        break;
    }
    switch (parameter.parameterType) {
    case pbParameterAngleDegrees:
        return {pbScalarFloat, 1};
    case pbParameterPosition:
        return {pbScalarFloat, 2};
    case pbParameterColorRGB:
        return {pbScalarFloat, 3};
    case pbParameterColorRGBA:
        return {pbScalarFloat, 4};
    case pbParameterEnum:
        return {pbScalarInt, 1};
    default:
        return {componentBase(parameter.type), componentCount(parameter.type)};
    }
}

// The whole text as a number; nothing when it is none, or not within the range.
template<class Number>
std::optional<Number> parseWhole(std::string_view text) {
    Number number{};
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
        !std::isfinite(number))
        return std::nullopt;
    return number;
}

template<class Number>
Number requireNumber(const std::string& name, const std::string& text, const char* what) {
    const auto number = parseWhole<Number>(text);
    if (!number)
        throw Failure(ExitCode::Usage, "--set " + name + ": \"" + text + "\" is not " + what);
    return *number;
}

bool requireTruth(const std::string& name, const std::string& text) {
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    throw Failure(ExitCode::Usage,
                  "--set " + name + ": \"" + text + "\" is neither true nor false");
}

pbValue readValue(const ParameterSetting& setting, pbScalarKind kind) {
    pbValue value;
    for (std::size_t k = 0; k < setting.values.size(); ++k) {
        const std::string& text = setting.values[k];
        if (kind == pbScalarInt)
            value.ints[k] = requireNumber<std::int32_t>(setting.name, text, "a whole number");
        else if (kind == pbScalarFloat)
            value.floats[k] = requireNumber<float>(setting.name, text, "a number");
        else
            value.bytes[k] = requireTruth(setting.name, text) ? 1 : 0;
    }
    return value;
}

// The name that the file gives the parameter. In a graph it bears the prefix of the graph's name
// space by now, which has the same length in both of its forms.
std::string_view nameInFile(const GraphParameter& parameter, bool isGraph) {
    static const std::size_t prefixLength = std::string_view("tveg_").size();
    const std::string_view whole = parameter.parameter.wholeName;
    return isGraph ? whole.substr(prefixLength) : whole;
}

std::string listOfNames(const pbGraph& graph, bool isGraph) {
    std::string list;
    for (const auto& parameter : graph.parameters)
        list.append(list.empty() ? "" : ", ").append(nameInFile(*parameter, isGraph));
    return list.empty() ? "it has none" : "it has " + list;
}

// By the whole name, or by as much of it as the model shows.
GraphParameter& findParameter(const pbGraph& graph, bool isGraph, const std::string& name) {
    for (const std::size_t length : {std::string_view::npos, pbName().size() - 1})
        for (const auto& parameter : graph.parameters)
            if (nameInFile(*parameter, isGraph).substr(0, length) == name)
                return *parameter;
    throw Failure(ExitCode::Usage,
                  "--set " + name + ": no such parameter; " + listOfNames(graph, isGraph));
}

} // namespace

ParameterSetting parseSetting(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Failure(ExitCode::Usage, "--set " + text +
                                           ": write NAME=VALUE, or NAME=V,V,V for a "
                                           "parameter of several numbers");
    ParameterSetting setting{text.substr(0, equals), {}};
    std::size_t start = equals + 1;
    for (std::size_t comma = 0; comma != std::string::npos; start = comma + 1) {
        comma = text.find(',', start);
        setting.values.push_back(text.substr(start, comma - start));
    }
    return setting;
}

void applySetting(const pbGraph& graph, bool isGraph, const ParameterSetting& setting) {
    GraphParameter& parameter = findParameter(graph, isGraph, setting.name);
    const ValueForm form = formOf(parameter.parameter);
    const std::size_t given = setting.values.size();
    if (form.kind == pbScalarNone)
        throw Failure(ExitCode::Usage, "--set " + setting.name + ": a parameter of type " +
                                           elementTypeName(parameter.parameter.type) +
                                           " takes no value");
    if (given != static_cast<std::size_t>(form.count))
        throw Failure(ExitCode::Usage,
                      "--set " + setting.name + ": takes " + std::to_string(form.count) +
                          (form.count == 1 ? " value, " : " values, ") + std::to_string(given) +
                          (given == 1 ? " is given" : " are given"));
    parameter.value = readValue(setting, form.kind);
}

void placeRelativePoints(const pbGraph& graph, unsigned width, unsigned height) {
    for (const auto& parameter : graph.parameters) {
        const pbPointDefault& point = parameter->parameter.aePointRelativeDefaultValue;
        if (!point.isSet || parameter->parameter.aeUIControl != pbControlPoint)
            continue;
        parameter->value = pbValue();
        parameter->value.floats[0] = point.x * static_cast<float>(width);
        parameter->value.floats[1] = point.y * static_cast<float>(height);
    }
}

} // namespace pbhost
