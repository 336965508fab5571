// The type names and metadata keywords of kernels and graphs, one table each for the whole system.
//
// Lookups compare exactly and take the first match; a null or unknown name gives 0. Files contain
// only the names, never the numbers.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

enum pbElementType : std::int32_t {
    pbTypeNone,
    pbTypeInt,
    pbTypeInt2,
    pbTypeInt3,
    pbTypeInt4,
    pbTypeFloat,
    pbTypeFloat2,
    pbTypeFloat3,
    pbTypeFloat4,
    pbTypeFloat2x2,
    pbTypeFloat3x3,
    pbTypeFloat4x4,
    pbTypeBool,
    pbTypeBool2,
    pbTypeBool3,
    pbTypeBool4,
    pbTypeString,
    pbTypeImage1,
    pbTypeImage2,
    pbTypeImage3,
    pbTypeImage4,
    pbTypePixel1,
    pbTypePixel2,
    pbTypePixel3,
    pbTypePixel4,
};

enum pbScalarKind : std::int32_t { pbScalarNone, pbScalarInt, pbScalarFloat, pbScalarBool };

// The value of the metadata key "parameterType". Row 13 repeats the name of row 4, so the readers
// never return it.
enum pbParameterType : std::int32_t {
    pbParameterNone,
    pbParameterAngleDegrees,
    pbParameterAngleRadians,
    pbParameterPercentage,
    pbParameterTime,
    pbParameterInputSize,
    pbParameterPosition,
    pbParameterColorLAB,
    pbParameterColorRGB,
    pbParameterColorCMYK,
    pbParameterColorRGBA,
    pbParameterEnum,
    pbParameterFrame,
    pbParameterTimeAgain,
};

// The value of the metadata key "aeUIControl".
enum pbUIControl : std::int32_t {
    pbControlNone,
    pbControlPopup,
    pbControlAngle,
    pbControlPercentSlider,
    pbControlOneChannelColor,
    pbControlPoint,
    pbControlColor,
};

struct pbElementTypeRow {
    const char* name;
    pbScalarKind scalarKind;
    int scalars;
    const char* glslCarrier; // the type of a varying that passes the value between shaders
};

inline constexpr std::array<pbElementTypeRow, 25> pbElementTypes = {{
    {"", pbScalarNone, 0, ""},
    {"int", pbScalarInt, 1, "float"},
    {"int2", pbScalarInt, 2, "vec2"},
    {"int3", pbScalarInt, 3, "vec3"},
    {"int4", pbScalarInt, 4, "vec4"},
    {"float", pbScalarFloat, 1, "float"},
    {"float2", pbScalarFloat, 2, "vec2"},
    {"float3", pbScalarFloat, 3, "vec3"},
    {"float4", pbScalarFloat, 4, "vec4"},
    {"float2x2", pbScalarFloat, 4, "mat2"},
    {"float3x3", pbScalarFloat, 9, "mat3"},
    {"float4x4", pbScalarFloat, 16, "mat4"},
    {"bool", pbScalarBool, 1, "float"},
    {"bool2", pbScalarBool, 2, "vec2"},
    {"bool3", pbScalarBool, 3, "vec3"},
    {"bool4", pbScalarBool, 4, "vec4"},
    {"string", pbScalarNone, 0, "string"},
    {"image1", pbScalarNone, 1, "image1"},
    {"image2", pbScalarNone, 2, "image2"},
    {"image3", pbScalarNone, 3, "image3"},
    {"image4", pbScalarNone, 4, "image4"},
    {"pixel1", pbScalarFloat, 1, "pixel1"},
    {"pixel2", pbScalarFloat, 2, "pixel2"},
    {"pixel3", pbScalarFloat, 3, "pixel3"},
    {"pixel4", pbScalarFloat, 4, "pixel4"},
}};

inline constexpr std::array<const char*, 14> pbParameterTypeNames = {
    "",         "angleDegrees", "angleRadians", "percentage", "time", "inputSize", "position",
    "colorLAB", "colorRGB",     "colorCMYK",    "colorRGBA",  "enum", "frame",     "time"};

inline constexpr std::array<const char*, 7> pbUIControlNames = {
    "", "aePopup", "aeAngle", "aePercentSlider", "aeOneChannelColor", "aePoint", "aeColor"};

pbElementType elementTypeFromName(const char* name);
pbElementType elementTypeFromName(std::string_view name);
pbParameterType parameterTypeFromName(const char* name);
pbParameterType parameterTypeFromName(std::string_view name);
pbUIControl uiControlFromName(const char* name);
pbUIControl uiControlFromName(std::string_view name);

// Name of an element type; a number outside the table is treated as 0, the row without a type.
const char* elementTypeName(pbElementType type);
pbScalarKind componentBase(pbElementType type);
int componentCount(pbElementType type);
bool isIntOrBool(pbElementType type);
const char* glslCarrierName(pbElementType type);
