#include "pbhost/lsp/language_words.h"

#include <algorithm>
#include <array>

namespace pbhost {

namespace {

constexpr std::array<LanguageWord, 62> functions = {{
    {"sampleNearest", "float4 sampleNearest(image4 source, float2 position)",
     "The pixel of an input at a position in pixels, without interpolation."},
    {"sampleLinear", "float4 sampleLinear(image4 source, float2 position)",
     "The pixel of an input at a position in pixels, interpolated between its neighbours."},
    {"sample", "float4 sample(image4 source, float2 position)", "The same as sampleLinear."},
    {"outCoord", "float2 outCoord()",
     "The position of the pixel that is computed: the centre of the first one is 0.5, 0.5."},
    {"pixelSize", "float2 pixelSize(image4 source)", "The size of a pixel; 1, 1 for an input."},
    {"pixelAspectRatio", "float pixelAspectRatio(image4 source)",
     "The width of a pixel over its height."},
    {"transform", "region transform(float2x2 matrix, region r)",
     "The region, transformed by a matrix."},
    {"union", "region union(region a, region b)", "The smallest region that contains both."},
    {"intersect", "region intersect(region a, region b)", "The region that both have in common."},
    {"outset", "region outset(region r, float2 amount)",
     "The region, larger by an amount at each side."},
    {"inset", "region inset(region r, float2 amount)",
     "The region, smaller by an amount at each side."},
    {"bounds", "region bounds(region r)", "The region itself."},
    {"isEmpty", "bool isEmpty(region r)", "Whether the region contains nothing."},
    {"dod", "region dod(image4 source)", "The region that an input covers; always empty."},
    {"nowhere", "region nowhere()", "The empty region."},
    {"everywhere", "region everywhere()", "The region of everything."},
    {"evaluatePixel", "void evaluatePixel()",
     "The kernel's main function: computes the output for one pixel."},
    {"evaluateDependents", "void evaluateDependents()",
     "Computes the values declared with dependent, once for each frame."},
    {"radians", "float radians(float degrees), also for float2, float3, float4",
     "Degrees in radians."},
    {"degrees", "float degrees(float radians), also for float2, float3, float4",
     "Radians in degrees."},
    {"sin", "float sin(float x), also for float2, float3, float4", "The sine."},
    {"cos", "float cos(float x), also for float2, float3, float4", "The cosine."},
    {"tan", "float tan(float x), also for float2, float3, float4", "The tangent."},
    {"asin", "float asin(float x), also for float2, float3, float4", "The arc sine."},
    {"acos", "float acos(float x), also for float2, float3, float4", "The arc cosine."},
    {"exp", "float exp(float x), also for float2, float3, float4", "e to the power of x."},
    {"log", "float log(float x), also for float2, float3, float4", "The natural logarithm."},
    {"exp2", "float exp2(float x), also for float2, float3, float4", "2 to the power of x."},
    {"log2", "float log2(float x), also for float2, float3, float4",
     "The logarithm to the base 2."},
    {"sqrt", "float sqrt(float x), also for float2, float3, float4", "The square root."},
    {"inverseSqrt", "float inverseSqrt(float x), also for float2, float3, float4",
     "1 over the square root."},
    {"abs", "float abs(float x), also for float2, float3, float4", "The absolute value."},
    {"sign", "float sign(float x), also for float2, float3, float4",
     "-1, 0 or 1, as x is negative, zero or positive."},
    {"floor", "float floor(float x), also for float2, float3, float4",
     "The largest whole number that is not above x."},
    {"ceil", "float ceil(float x), also for float2, float3, float4",
     "The smallest whole number that is not below x."},
    {"fract", "float fract(float x), also for float2, float3, float4", "x less floor(x)."},
    {"normalize", "float normalize(float x), also for float2, float3, float4",
     "The vector with the same direction and length 1."},
    {"pow", "float pow(float x, float y), also for vectors", "x to the power of y."},
    {"mod", "float mod(float x, float y), also for vectors", "x less y * floor(x / y)."},
    {"min", "float min(float x, float y), also for vectors", "The smaller of both."},
    {"max", "float max(float x, float y), also for vectors", "The larger of both."},
    {"step", "float step(float edge, float x), also for vectors", "0 below the edge, otherwise 1."},
    {"atan", "float atan(float y, float x), also for vectors",
     "The angle of the point x, y; with one argument, the arc tangent."},
    {"clamp", "float clamp(float x, float low, float high), also for vectors",
     "x, but not below low and not above high."},
    {"mix", "float mix(float x, float y, float a), also for vectors", "x * (1 - a) + y * a."},
    {"smoothStep", "float smoothStep(float low, float high, float x), also for vectors",
     "0 below low, 1 above high, a smooth step between."},
    {"reflect", "float2 reflect(float2 i, float2 n), also for vectors",
     "The reflection of i at a surface with the normal n."},
    {"refract", "float2 refract(float2 i, float2 n, float eta), also for vectors",
     "The refraction of i at a surface with the normal n."},
    {"faceforward", "float2 faceforward(float2 n, float2 i, float2 ref), also for vectors",
     "n, turned against i."},
    {"length", "float length(float2 x), also for float3, float4", "The length of a vector."},
    {"distance", "float distance(float2 a, float2 b), also for float3, float4",
     "The distance of two points."},
    {"dot", "float dot(float2 a, float2 b), also for float3, float4", "The dot product."},
    {"cross", "float3 cross(float3 a, float3 b)", "The cross product."},
    {"any", "bool any(bool2 x), also for bool3, bool4", "Whether a component is true."},
    {"all", "bool all(bool2 x), also for bool3, bool4", "Whether all components are true."},
    {"not", "bool2 not(bool2 x), also for bool3, bool4", "Each component negated."},
    {"lessThan", "bool2 lessThan(float2 a, float2 b), also for the other vectors",
     "Compares each component by <."},
    {"lessThanEqual", "bool2 lessThanEqual(float2 a, float2 b), also for the other vectors",
     "Compares each component by <=."},
    {"greaterThan", "bool2 greaterThan(float2 a, float2 b), also for the other vectors",
     "Compares each component by >."},
    {"greaterThanEqual", "bool2 greaterThanEqual(float2 a, float2 b), also for the other vectors",
     "Compares each component by >=."},
    {"equal", "bool2 equal(float2 a, float2 b), also for the other vectors",
     "Compares each component by ==."},
    {"notEqual", "bool2 notEqual(float2 a, float2 b), also for the other vectors",
     "Compares each component by !=."},
}};

constexpr std::array<LanguageWord, 26> types = {{
    {"int", "int", "One of integers."},
    {"int2", "int2", "A vector of 2 integers."},
    {"int3", "int3", "A vector of 3 integers."},
    {"int4", "int4", "A vector of 4 integers."},
    {"float", "float", "One of floats."},
    {"float2", "float2", "A vector of 2 floats."},
    {"float3", "float3", "A vector of 3 floats."},
    {"float4", "float4", "A vector of 4 floats."},
    {"bool", "bool", "One of truth values."},
    {"bool2", "bool2", "A vector of 2 truth values."},
    {"bool3", "bool3", "A vector of 3 truth values."},
    {"bool4", "bool4", "A vector of 4 truth values."},
    {"float2x2", "float2x2", "A matrix of 2 columns of 2 floats."},
    {"float3x3", "float3x3", "A matrix of 3 columns of 3 floats."},
    {"float4x4", "float4x4", "A matrix of 4 columns of 4 floats."},
    {"pixel1", "pixel1", "A pixel of 1 channel, the same as float."},
    {"pixel2", "pixel2", "A pixel of 2 channels, the same as float2."},
    {"pixel3", "pixel3", "A pixel of 3 channels, the same as float3."},
    {"pixel4", "pixel4",
     "A pixel of 4 channels, the same as float4. The output must be of this type or float4."},
    {"image1", "image1", "An input image of 1 channel; it is sampled with four."},
    {"image2", "image2", "An input image of 2 channels; it is sampled with four."},
    {"image3", "image3", "An input image of 3 channels; it is sampled with four."},
    {"image4", "image4", "An input image of 4 channels; it is sampled with four."},
    {"region", "region", "A rectangle: left, top, right, bottom."},
    {"imageRef", "imageRef", "A number of an image."},
    {"void", "void", "No value."},
}};

constexpr std::array<LanguageWord, 20> keywords = {{
    {"kernel", "kernel NAME < METADATA > { ... }", "Begins the kernel."},
    {"languageVersion", "<languageVersion : 1.0;>", "The first line of a file."},
    {"input", "input image4 NAME;", "An input image; the effect feeds up to four."},
    {"output", "output pixel4 NAME;", "The pixel that evaluatePixel computes."},
    {"parameter", "parameter TYPE NAME < METADATA >;", "A value that the user sets."},
    {"dependent", "dependent TYPE NAME;",
     "A value that evaluateDependents computes once for each frame."},
    {"const", "const TYPE NAME = VALUE;", "A constant."},
    {"if", "if (CONDITION) ...", ""},
    {"else", "else ...", ""},
    {"for", "for (...; ...; ...) ...", "Mesa's software driver ends a loop after 65535 rounds."},
    {"while", "while (CONDITION) ...", ""},
    {"do", "do ... while (CONDITION);", ""},
    {"return", "return VALUE;", ""},
    {"break", "break;", ""},
    {"continue", "continue;", ""},
    {"true", "true", ""},
    {"false", "false", ""},
    {"in", "in TYPE NAME", ""},
    {"out", "out TYPE NAME", ""},
    {"inout", "inout TYPE NAME", ""},
}};

constexpr std::array<LanguageWord, 11> keysOfParameters = {{
    {"defaultValue", "defaultValue : VALUE;",
     "The value that the control has at first. A vector needs all its numbers: float3(0.5) is 0.5, "
     "0, 0."},
    {"minValue", "minValue : VALUE;", "The low end of the control's range; 0 if it is missing."},
    {"maxValue", "maxValue : VALUE;", "The high end of the control's range; 0 if it is missing."},
    {"aeUIControl", "aeUIControl : \"HINT\";", "The kind of control."},
    {"parameterType", "parameterType : \"TYPE\";",
     "What the value means, which decides the control if there is no aeUIControl."},
    {"displayName", "displayName : \"NAME\";",
     "The control's name, unless there is an aeDisplayName."},
    {"aeDisplayName", "aeDisplayName : \"NAME\";", "The control's name."},
    {"aePopupString", "aePopupString : \"First|Second\";",
     "The choices of a popup; the value counts from 0."},
    {"enumValues", "enumValues : \"First|Second\";", "The choices of a parameter of type enum."},
    {"aePointRelativeDefaultValue", "aePointRelativeDefaultValue : float2(0.5, 0.5);",
     "The default of a point as a part of the layer's size."},
    {"description", "description : \"TEXT\";", "What the parameter is for."},
}};

constexpr std::array<LanguageWord, 5> keysOfPrograms = {{
    {"languageVersion", "languageVersion : 1.0;", "The version of the language."},
    {"namespace", "namespace : \"TEXT\";", "Where the kernel's name is unique."},
    {"vendor", "vendor : \"TEXT\";", "Who made the kernel."},
    {"version", "version : 1;", "The kernel's version, an integer."},
    {"description", "description : \"TEXT\";", "What the kernel does."},
}};

constexpr std::array<LanguageWord, 6> hints = {{
    {"aePopup", "int", "A popup with the choices of aePopupString."},
    {"aeAngle", "float", "An angle in degrees."},
    {"aePercentSlider", "float", "A slider in percent."},
    {"aeOneChannelColor", "float", "A slider for one channel of a color."},
    {"aePoint", "float2", "A point in pixels."},
    {"aeColor", "float3 or float4", "A color."},
}};

constexpr std::array<LanguageWord, 12> meanings = {{
    {"angleDegrees", "float", "An angle in degrees."},
    {"angleRadians", "float", "An angle in radians, shown as a slider."},
    {"percentage", "float", "A slider in percent."},
    {"time", "float", "A time, shown as a slider."},
    {"inputSize", "float2", "The size of an input, shown as sliders."},
    {"position", "float2", "A point in pixels."},
    {"colorLAB", "float3", "A color, shown as sliders."},
    {"colorRGB", "float3", "A color without alpha."},
    {"colorCMYK", "float4", "A color, shown as sliders."},
    {"colorRGBA", "float4", "A color with alpha."},
    {"enum", "int", "A popup with the choices of enumValues."},
    {"frame", "int", "The number of a frame, shown as a slider."},
}};

} // namespace

std::span<const LanguageWord> builtInFunctions() {
    return functions;
}

std::span<const LanguageWord> languageTypes() {
    return types;
}

std::span<const LanguageWord> languageKeywords() {
    return keywords;
}

std::span<const LanguageWord> parameterKeys() {
    return keysOfParameters;
}

std::span<const LanguageWord> programKeys() {
    return keysOfPrograms;
}

std::span<const LanguageWord> uiHints() {
    return hints;
}

std::span<const LanguageWord> parameterTypes() {
    return meanings;
}

const LanguageWord* findWordIn(std::span<const LanguageWord> words, std::string_view name) {
    const auto found = std::find_if(words.begin(), words.end(),
                                    [&](const LanguageWord& each) { return each.name == name; });
    return found == words.end() ? nullptr : &*found;
}

} // namespace pbhost
