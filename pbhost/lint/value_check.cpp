#include "pbhost/lint/value_check.h"

#include <algorithm>
#include <array>
#include <optional>

#include "pbhost/diagnostics/diagnostic.h"
#include "pbhost/diagnostics/wiring.h"
#include "pbhost/session/control_list.h"

namespace pbhost {

namespace {

// Must agree with the effect's pools; a test compares them.
struct Pool {
    const char* name;
    int controls;
};
constexpr Pool checkboxes = {"checkboxes", 20};
constexpr Pool popups = {"popups", 10};
constexpr Pool wholeSliders = {"sliders for integers", 10};
constexpr Pool sliders = {"sliders for floats", 50};
constexpr Pool points = {"points", 10};
constexpr Pool angles = {"angles", 10};
constexpr Pool colors = {"colors", 10};

// What a hint or a parameter type needs.
struct Need {
    const char* name;
    const Pool* pool;
    pbScalarKind kind;
    int fewest, most; // components
    bool hasRange;    // its control has a range from minValue to maxValue
};

constexpr std::array<Need, 6> hintNeeds = {{
    {"aePopup", &popups, pbScalarInt, 1, 1, false},
    {"aeAngle", &angles, pbScalarFloat, 1, 1, false},
    {"aePercentSlider", &sliders, pbScalarFloat, 1, 1, true},
    {"aeOneChannelColor", &sliders, pbScalarFloat, 1, 1, true},
    {"aePoint", &points, pbScalarFloat, 2, 2, false},
    {"aeColor", &colors, pbScalarFloat, 3, 4, false},
}};

constexpr std::array<Need, 5> typeNeeds = {{
    {"angleDegrees", &angles, pbScalarFloat, 1, 1, false},
    {"position", &points, pbScalarFloat, 2, 2, false},
    {"colorRGB", &colors, pbScalarFloat, 3, 3, false},
    {"colorRGBA", &colors, pbScalarFloat, 4, 4, false},
    {"enum", &popups, pbScalarInt, 1, 1, false},
}};

// The need of the hint, which takes precedence, or of the type; null for neither.
const Need* needOf(const pbParameter& parameter) {
    if (parameter.aeUIControl != pbControlNone)
        return &hintNeeds.at(static_cast<std::size_t>(parameter.aeUIControl) - 1);
    const std::string_view name = pbParameterTypeNames.at(parameter.parameterType);
    const auto found = std::find_if(typeNeeds.begin(), typeNeeds.end(),
                                    [&](const Need& need) { return need.name == name; });
    return found == typeNeeds.end() ? nullptr : &*found;
}

const Pool& poolOf(const pbParameter& parameter) {
    if (const Need* need = needOf(parameter))
        return *need->pool;
    const pbScalarKind kind = componentBase(parameter.type);
    return kind == pbScalarInt ? wholeSliders : kind == pbScalarBool ? checkboxes : sliders;
}

double number(pbElementType type, const pbValueSlot& slot, int k) {
    const auto at = static_cast<std::size_t>(k);
    switch (componentBase(type)) {
    case pbScalarInt:
        return slot.value.ints[at];
    case pbScalarFloat:
        return static_cast<double>(slot.value.floats[at]);
    default:
        return slot.value.bytes[at];
    }
}

std::string nameOfType(pbElementType type) {
    return elementTypeName(type);
}

void checkNeed(const pbParameter& parameter, std::vector<ParameterFault>& faults) {
    const Need* need = needOf(parameter);
    const int count = componentCount(parameter.type);
    if (need == nullptr || (componentBase(parameter.type) == need->kind && count >= need->fewest &&
                            count <= need->most))
        return;
    std::string wanted = need->kind == pbScalarInt ? "int" : "float";
    if (need->fewest > 1)
        wanted += std::to_string(need->fewest);
    if (need->most > need->fewest)
        wanted += " or float" + std::to_string(need->most);
    const bool isHint = parameter.aeUIControl != pbControlNone;
    faults.push_back({"control-type", isHint ? "aeUIControl" : "parameterType",
                      inQuotes(need->name) + " is for a parameter of type " + wanted + ", not " +
                          nameOfType(parameter.type)});
}

bool hasRange(const pbParameter& parameter) {
    const Need* need = needOf(parameter);
    return need == nullptr ? componentBase(parameter.type) != pbScalarBool : need->hasRange;
}

void checkRange(const pbParameter& parameter, std::vector<ParameterFault>& faults) {
    const bool isMissing = !parameter.minValue.isSet && !parameter.maxValue.isSet;
    for (int k = 0; k < componentCount(parameter.type); ++k) {
        const double low = number(parameter.type, parameter.minValue, k);
        const double high = number(parameter.type, parameter.maxValue, k);
        if (low < high)
            continue;
        const std::string what = isMissing ? "has neither minValue nor maxValue; without them"
                                 : !parameter.maxValue.isSet ? "has no maxValue, which is then 0;"
                                 : !parameter.minValue.isSet ? "has no minValue, which is then 0;"
                                                             : "has an empty range;";
        faults.push_back({"range", parameter.maxValue.isSet ? "maxValue" : "minValue",
                          "parameter \"" + std::string(parameter.wholeName) + "\" " + what +
                              " its control ranges from " + numberText(low) + " to " +
                              numberText(high)});
        return;
    }
    for (int k = 0; k < componentCount(parameter.type); ++k) {
        const double value = number(parameter.type, parameter.defaultValue, k);
        const double low = number(parameter.type, parameter.minValue, k);
        const double high = number(parameter.type, parameter.maxValue, k);
        if (!parameter.defaultValue.isSet || (value >= low && value <= high))
            continue;
        faults.push_back({"default-range", "defaultValue",
                          "the default " + numberText(value) + " is outside of the range " +
                              numberText(low) + " to " + numberText(high)});
        return;
    }
}

// Keys that other programs show and the effect ignores.
constexpr std::array<std::string_view, 6> ignoredKeys = {
    "description", "displayname", "displayName", "category", "stepInterval", "previewValue"};

std::string unknownKey(std::string_view key, std::vector<std::string_view> known) {
    if (std::find(known.begin(), known.end(), key) != known.end() ||
        std::find(ignoredKeys.begin(), ignoredKeys.end(), key) != ignoredKeys.end())
        return "";
    std::string message = "the key \"" + std::string(key) + "\" is unknown and has no effect; ";
    const auto nearest = std::min_element(known.begin(), known.end(), [&](auto one, auto other) {
        return editDistance(key, one) < editDistance(key, other);
    });
    if (editDistance(key, *nearest) * 2 <= nearest->size())
        return message + inQuotes(*nearest) + " may be meant";
    return message + namesLike(key, std::move(known));
}

} // namespace

std::vector<ParameterFault> faultsOf(const pbParameter& parameter) {
    std::vector<ParameterFault> faults;
    if (componentCount(parameter.type) == 0 || componentBase(parameter.type) == pbScalarNone) {
        faults.push_back({"parameter-type", "",
                          "parameter \"" + std::string(parameter.wholeName) +
                              "\" has a type without a control; there are int, float and bool, "
                              "each with up to 4 components, and square matrices of floats"});
        return faults;
    }
    checkNeed(parameter, faults);
    if (hasRange(parameter))
        checkRange(parameter, faults);
    return faults;
}

std::vector<std::size_t> parametersWithoutControl(const HostVector<pbParameter>& parameters) {
    std::vector<std::pair<const Pool*, int>> taken;
    std::vector<std::size_t> without;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const pbParameter& parameter = parameters[i];
        if (componentCount(parameter.type) == 0)
            continue;
        const Pool& pool = poolOf(parameter);
        auto used = std::find_if(taken.begin(), taken.end(),
                                 [&](const auto& each) { return each.first == &pool; });
        if (used == taken.end())
            used = taken.insert(taken.end(), {&pool, 0});
        const int wanted = needOf(parameter) != nullptr ? 1 : componentCount(parameter.type);
        if (used->second + wanted <= pool.controls)
            used->second += wanted;
        else
            without.push_back(i);
    }
    return without;
}

std::string controlsFor(const pbParameter& parameter) {
    const Pool& pool = poolOf(parameter);
    return std::to_string(pool.controls) + " " + pool.name;
}

std::string unknownParameterKey(std::string_view key) {
    return unknownKey(key, {"defaultValue", "minValue", "maxValue", "aeUIControl", "parameterType",
                            "displayName", "aeDisplayName", "enumValues", "aePopupString",
                            "aePointRelativeDefaultValue"});
}

std::string unknownProgramKey(std::string_view key) {
    return unknownKey(key, {"languageVersion", "namespace", "vendor", "version", "description"});
}

} // namespace pbhost
