#include "pixelbender/model.h"

#include <algorithm>

void copyName(pbName& field, std::string_view source) {
    source = source.substr(0, field.size() - 1);
    std::fill(std::copy(source.begin(), source.end(), field.begin()), field.end(), '\0');
}

void copyName(pbName& field, const char* source) {
    copyName(field, source == nullptr ? std::string_view() : source);
}

pbText& pbText::operator=(std::string_view source) {
    text_ = std::allocate_shared<NarrowString>(aeAllocator<NarrowString>(), source);
    return *this;
}

pbVariable::pbVariable(pbElementType variableType, std::string_view variableName)
    : type(variableType) {
    setName(variableName);
}

void pbVariable::setName(std::string_view variableName) {
    copyName(name, variableName);
    wholeName = variableName;
}
