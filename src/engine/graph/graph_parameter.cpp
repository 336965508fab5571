#include "engine/graph/graph_parameter.h"

namespace {

using Upload = void (*)(GLint location, const pbValue& value);

void uploadNothing(GLint, const pbValue&) {}

template<int count>
void uploadFloats(GLint location, const pbValue& value) {
    constexpr auto send = std::array{&glUniform1fv, &glUniform2fv, &glUniform3fv, &glUniform4fv};
    (*send[count - 1])(location, 1, value.floats.data());
}

template<int count>
void uploadInts(GLint location, const pbValue& value) {
    constexpr auto send = std::array{&glUniform1iv, &glUniform2iv, &glUniform3iv, &glUniform4iv};
    (*send[count - 1])(location, 1, value.ints.data());
}

template<int count>
void uploadBools(GLint location, const pbValue& value) {
    pbValue truths;
    for (std::size_t k = 0; k < count; ++k)
        truths.ints[k] = value.bytes[k] != 0 ? 1 : 0;
    uploadInts<count>(location, truths);
}

template<int size>
void uploadMatrix(GLint location, const pbValue& value) {
    constexpr auto send = std::array{&glUniformMatrix2fv, &glUniformMatrix3fv, &glUniformMatrix4fv};
    (*send[size - 2])(location, 1, GL_FALSE, value.floats.data());
}

// By the hint for the control, in the order of pbUIControl; null: not decided by the hint.
constexpr std::array<Upload, 7> uploadsOfHints = {
    nullptr,
    uploadInts<1>,   // popup
    uploadFloats<1>, // angle
    uploadFloats<1>, // percent slider
    uploadFloats<1>, // one-channel colour
    uploadFloats<2>, // point
    nullptr,         // by the element type, see uploadOfColor
};

// By the parameter type, in the order of pbParameterType; null: not decided by it.
constexpr std::array<Upload, 14> uploadsOfParameterTypes = {
    nullptr,         uploadFloats<1>, // angleDegrees
    nullptr,         nullptr,         nullptr, nullptr,
    uploadFloats<2>, // position
    nullptr,
    uploadFloats<3>, // colorRGB
    nullptr,
    uploadFloats<4>, // colorRGBA
    uploadInts<1>,   // enum
    nullptr,         nullptr,
};

// By the element type, in the order of pbElementType.
constexpr std::array<Upload, 25> uploadsOfElementTypes = {
    uploadNothing,   uploadInts<1>,   uploadInts<2>,   uploadInts<3>,
    uploadInts<4>,   uploadFloats<1>, uploadFloats<2>, uploadFloats<3>,
    uploadFloats<4>, uploadMatrix<2>, uploadMatrix<3>, uploadMatrix<4>,
    uploadBools<1>,  uploadBools<2>,  uploadBools<3>,  uploadBools<4>,
    uploadNothing, // string
    uploadNothing, // image1 to image4
    uploadNothing,   uploadNothing,   uploadNothing,
    uploadFloats<1>, // pixel1 to pixel4
    uploadFloats<2>, uploadFloats<3>, uploadFloats<4>,
};

// Colours have three or four components; nothing is sent for other types.
Upload uploadOfColor(pbElementType type) {
    if (type == pbTypeFloat4 || type == pbTypePixel4)
        return uploadFloats<4>;
    return type == pbTypeFloat3 || type == pbTypePixel3 ? uploadFloats<3> : uploadNothing;
}

// The hint takes precedence over the parameter type, and that over the element type.
Upload uploadOf(const pbParameter& parameter) {
    if (parameter.aeUIControl == pbControlColor)
        return uploadOfColor(parameter.type);
    if (const Upload upload = uploadsOfHints.at(parameter.aeUIControl))
        return upload;
    if (const Upload upload = uploadsOfParameterTypes.at(parameter.parameterType))
        return upload;
    return uploadsOfElementTypes.at(parameter.type);
}

} // namespace

GraphParameter::GraphParameter(const pbParameter& source)
    : parameter(source), value(source.defaultValue.value), upload_(uploadOf(source)) {}

void GraphParameter::apply(GLuint program) const {
    upload_(glGetUniformLocation(program, parameter.wholeName.c_str()), value);
}
