#include "pixelbender/types.h"

namespace {

const char* nameOf(const pbElementTypeRow& row) {
    return row.name;
}

const char* nameOf(const char* name) {
    return name;
}

// The index of the first row with that name; 0 if there is none.
template<class Table>
std::int32_t find(const Table& table, std::string_view name) {
    for (std::size_t row = 0; row < table.size(); ++row)
        if (name == nameOf(table[row]))
            return static_cast<std::int32_t>(row);
    return 0;
}

std::string_view orEmpty(const char* name) {
    return name == nullptr ? std::string_view() : name;
}

const pbElementTypeRow& rowOf(pbElementType type) {
    const auto row = static_cast<std::size_t>(type);
    return row < pbElementTypes.size() ? pbElementTypes[row] : pbElementTypes[0];
}

} // namespace

pbElementType elementTypeFromName(std::string_view name) {
    return static_cast<pbElementType>(find(pbElementTypes, name));
}

pbElementType elementTypeFromName(const char* name) {
    return elementTypeFromName(orEmpty(name));
}

pbParameterType parameterTypeFromName(std::string_view name) {
    return static_cast<pbParameterType>(find(pbParameterTypeNames, name));
}

pbParameterType parameterTypeFromName(const char* name) {
    return parameterTypeFromName(orEmpty(name));
}

pbUIControl uiControlFromName(std::string_view name) {
    return static_cast<pbUIControl>(find(pbUIControlNames, name));
}

pbUIControl uiControlFromName(const char* name) {
    return uiControlFromName(orEmpty(name));
}

const char* elementTypeName(pbElementType type) {
    return rowOf(type).name;
}

pbScalarKind componentBase(pbElementType type) {
    return rowOf(type).scalarKind;
}

int componentCount(pbElementType type) {
    return rowOf(type).scalars;
}

bool isIntOrBool(pbElementType type) {
    const pbScalarKind kind = componentBase(type);
    return kind == pbScalarInt || kind == pbScalarBool;
}

const char* glslCarrierName(pbElementType type) {
    return rowOf(type).glslCarrier;
}
