// The fixed texts of every generated GLSL program: kernels depend on them byte for byte.
#pragma once

#include <string_view>

// The kernel language's keywords in GLSL. Two are defined as empty: their lines end in a blank.
inline constexpr std::string_view glslDefinitions = R"glsl(#define AIF_FLASH_TARGET 0
#define input uniform
#define output 
#define bool2 bvec2
#define bool3 bvec3
#define bool4 bvec4
#define int2 ivec2
#define int3 ivec3
#define int4 ivec4
#define float2 vec2
#define float3 vec3
#define float4 vec4
#define float2x2 mat2
#define float3x3 mat3
#define float4x4 mat4
#define pixel1 float
#define pixel2 vec2
#define pixel3 vec3
#define pixel4 vec4
#define image1 sampler2D
#define image2 sampler2D
#define image3 sampler2D
#define image4 sampler2D
#define imageRef int
#define dependent 
#define region vec4
#define smoothStep smoothstep
#define inverseSqrt inversesqrt
)glsl";

// The kernel language's built-in functions, with the uniforms that the engine sets for each frame.
// Coordinates are always pixels at full resolution.
inline constexpr std::string_view glslPrelude = R"glsl(uniform vec2 tvek_outputPixelSize;
uniform vec2 tvek_texturePixelSize[tvek__INPUT_MAX];
varying vec4 tvek_vertexPosition;
uniform vec2 tvek_compSize;
uniform vec2 tvek_downsamplingRate;
vec2 pixelSize(int index){return tvek_texturePixelSize[index];}
vec2 pixelSize(sampler2D index){return vec2(1,1);}
vec2 pixelSize(float argf){return tvek_outputPixelSize;}
vec2 pixelSize(vec2 argv){return tvek_outputPixelSize;}
vec2 pixelSize(vec3 argv){return tvek_outputPixelSize;}
vec2 pixelSize(vec4 argv){return tvek_outputPixelSize;}
float pixelAspectRatio(int index){return tvek_texturePixelSize[index].x/tvek_texturePixelSize[index].y;}
float pixelAspectRatio(sampler2D index){return 1.;}
float pixelAspectRatio(float argf){return tvek_outputPixelSize.x/tvek_outputPixelSize.y;}
float pixelAspectRatio(vec2 argv){return tvek_outputPixelSize.x/tvek_outputPixelSize.y;}
float pixelAspectRatio(vec3 argv){return tvek_outputPixelSize.x/tvek_outputPixelSize.y;}
float pixelAspectRatio(vec4 argv){return tvek_outputPixelSize.x/tvek_outputPixelSize.y;}
vec2 outCoord(){return tvek_vertexPosition.xy/tvek_downsamplingRate;}
vec4 sample(sampler2D index, vec2 coord){return texture2D(index,coord*tvek_downsamplingRate/tvek_compSize) tvek_SWIZZLE_IN;}
vec4 sampleLinear(sampler2D index,vec2 coord){return sample(index,coord);}
vec4 sampleNearest(sampler2D index,vec2 coord){return sample(index,floor(coord)+vec2(.5,.5));}
vec4 nowhere(){return vec4(0,0,0,0);}
vec4 everywhere(){return vec4(0,0,0,0);}
vec4 transform(mat2 m, vec4 r){return vec4(m*r.xy,m*r.zw);}
vec4 transform(mat3 m, vec4 r){return vec4(mat2(m[0][0],m[0][1],m[1][0],m[1][1])*r.xy,mat2(m[0][0],m[0][1],m[1][0],m[1][1])*r.zw)-vec4(m[2][0],m[2][1],m[2][0],m[2][1]);}
vec4 tvek_union(vec4 a, vec4 b){return vec4(min(a.xy,b.xy),max(a.zw,b.zw));}
vec4 intersect(vec4 a, vec4 b){return vec4(max(a.xy,b.xy),min(a.zw,b.zw));}
vec4 outset(vec4 a, vec2 amount){return vec4(a.xy-amount,a.zw+amount);}
vec4 inset(vec4 a,vec2 amount){return vec4(a.xy+amount,a.zw-amount);}
vec4 bounds(vec4 r){return r;}
bool isEmpty(vec4 r){return (r.x >= r.z) || (r.y>=r.w);}
vec4 dod(int i){return vec4(0,0,0,0);}
vec4 dod(sampler2D i){return vec4(0,0,0,0);}
)glsl";

static_assert(glslDefinitions.size() == 611 && glslPrelude.size() == 2181);
