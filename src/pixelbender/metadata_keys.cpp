#include "pixelbender/metadata_keys.h"

#include <algorithm>
#include <array>

namespace {

template<class Field>
struct Key {
    std::string_view name;
    Field field;
};

constexpr std::array<Key<pbValueSlot pbParameter::*>, 3> valueKeys = {{
    {"defaultValue", &pbParameter::defaultValue},
    {"minValue", &pbParameter::minValue},
    {"maxValue", &pbParameter::maxValue},
}};

template<class Owner, auto field>
void setName(Owner& owner, std::string_view text) {
    copyName(owner.*field, text);
}

template<class Owner, auto field>
void setText(Owner& owner, std::string_view text) {
    owner.*field = text;
}

void setUiControl(pbParameter& parameter, std::string_view name) {
    parameter.aeUIControl = uiControlFromName(name);
}

void setParameterType(pbParameter& parameter, std::string_view name) {
    parameter.parameterType = parameterTypeFromName(name);
}

constexpr std::array<Key<SetText<pbParameter>>, 6> parameterKeys = {{
    {"aeUIControl", setUiControl},
    {"parameterType", setParameterType},
    {"displayName", setName<pbParameter, &pbParameter::displayName>},
    {"aeDisplayName", setName<pbParameter, &pbParameter::aeDisplayName>},
    {"enumValues", setText<pbParameter, &pbParameter::enumValues>},
    {"aePopupString", setText<pbParameter, &pbParameter::aePopupString>},
}};

constexpr std::array<Key<SetText<pbMetadata>>, 3> programKeys = {{
    {"namespace", setName<pbMetadata, &pbMetadata::namespaceName>},
    {"vendor", setName<pbMetadata, &pbMetadata::vendor>},
    {"description", setText<pbMetadata, &pbMetadata::description>},
}};

template<class Keys>
auto fieldOf(const Keys& keys, std::string_view name) {
    const auto found = std::ranges::find(keys, name, &Keys::value_type::name);
    return found == keys.end() ? nullptr : found->field;
}

} // namespace

pbValueSlot pbParameter::*valueField(std::string_view key) {
    return fieldOf(valueKeys, key);
}

SetText<pbParameter> parameterTextSetter(std::string_view key) {
    return fieldOf(parameterKeys, key);
}

SetText<pbMetadata> programTextSetter(std::string_view key) {
    return fieldOf(programKeys, key);
}
