#include "engine/graph_parameter.h"

namespace {

// Each of these three gives false when its table has no row for the parameter.

bool applyByControl(GLint location, pbUIControl control, pbElementType type, const pbValue& value) {
    const float* floats = value.floats.data();
    switch (control) {
    case pbControlPopup:
        glUniform1i(location, value.ints[0]);
        return true;
    case pbControlAngle:
    case pbControlPercentSlider:
    case pbControlOneChannelColor:
        glUniform1f(location, floats[0]);
        return true;
    case pbControlPoint:
        glUniform2f(location, floats[0], floats[1]);
        return true;
    case pbControlColor:
        if (type == pbTypeFloat4 || type == pbTypePixel4)
            glUniform4fv(location, 1, floats);
        else if (type == pbTypeFloat3 || type == pbTypePixel3)
            glUniform3fv(location, 1, floats);
        return true;
    case pbControlNone:
        break;
    }
    return false;
}

bool applyByParameterType(GLint location, pbParameterType type, const pbValue& value) {
    const float* floats = value.floats.data();
    switch (type) {
    case pbParameterAngleDegrees:
        glUniform1f(location, floats[0]);
        return true;
    case pbParameterPosition:
        glUniform2f(location, floats[0], floats[1]);
        return true;
    case pbParameterColorRGB:
        glUniform3fv(location, 1, floats);
        return true;
    case pbParameterColorRGBA:
        glUniform4fv(location, 1, floats);
        return true;
    case pbParameterEnum:
        glUniform1i(location, value.ints[0]);
        return true;
    default:
        return false;
    }
}

void sendInts(GLint location, int count, const std::array<std::int32_t, 16>& v) {
    switch (count) {
    case 1:
        glUniform1i(location, v[0]);
        break;
    case 2:
        glUniform2i(location, v[0], v[1]);
        break;
    case 3:
        glUniform3i(location, v[0], v[1], v[2]);
        break;
    default:
        glUniform4i(location, v[0], v[1], v[2], v[3]);
        break;
    }
}

void sendFloats(GLint location, pbElementType type, const std::array<float, 16>& v) {
    switch (type) {
    case pbTypeFloat2x2:
        glUniformMatrix2fv(location, 1, GL_FALSE, v.data());
        return;
    case pbTypeFloat3x3:
        glUniformMatrix3fv(location, 1, GL_FALSE, v.data());
        return;
    case pbTypeFloat4x4:
        glUniformMatrix4fv(location, 1, GL_FALSE, v.data());
        return;
    default:
        break;
    }
    switch (componentCount(type)) {
    case 1:
        glUniform1f(location, v[0]);
        break;
    case 2:
        glUniform2f(location, v[0], v[1]);
        break;
    case 3:
        glUniform3f(location, v[0], v[1], v[2]);
        break;
    default:
        glUniform4f(location, v[0], v[1], v[2], v[3]);
        break;
    }
}

void applyByElementType(GLint location, pbElementType type, const pbValue& value) {
    switch (componentBase(type)) {
    case pbScalarInt:
        sendInts(location, componentCount(type), value.ints);
        break;
    case pbScalarFloat:
        sendFloats(location, type, value.floats);
        break;
    case pbScalarBool: {
        std::array<std::int32_t, 16> truths{};
        for (std::size_t k = 0; k < truths.size(); ++k)
            truths[k] = value.bytes[k] != 0 ? 1 : 0;
        sendInts(location, componentCount(type), truths);
        break;
    }
    case pbScalarNone:
        break;
    }
}

} // namespace

void GraphParameter::apply(GLuint program) const {
    const GLint location = glGetUniformLocation(program, parameter.wholeName.c_str());
    if (!applyByControl(location, parameter.aeUIControl, parameter.type, value) &&
        !applyByParameterType(location, parameter.parameterType, value))
        applyByElementType(location, parameter.type, value);
}
