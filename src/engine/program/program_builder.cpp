#include "engine/program/program_builder.h"

#include <GL/glew.h>

#include <array>
#include <cstdio>
#include <string>

#include "engine/program/varying_count.h"
#include "support/outcome_texts.h"
#include "support/report.h"

namespace {

struct Stage {
    GLenum type;
    const char* word;
    const char* tag; // in the error log
    const char* banner;
};

constexpr Stage vertexStage = {GL_VERTEX_SHADER, "vertex", vertexTag,
                               "*********** vglsl **********\n"};
constexpr Stage fragmentStage = {GL_FRAGMENT_SHADER, "fragment", fragmentTag,
                                 "*********** fglsl **********\n"};

using InfoLog = std::array<char, 1024>;
constexpr GLsizei infoLogLimit = 1023;

// Reports the mark, the name and what happened to the developer and to the user.
void reportFailure(std::string_view name, std::string_view what) {
    NarrowString message(failureMark);
    message.append(name).append(what);
    reportMessage(message.c_str(), ChannelTrace);
    reportMessage(message.c_str(), ChannelInfo);
}

void reportLog(std::string_view name, const char* tag, std::string_view log) {
    NarrowString message(name);
    message.append(tag).append(log).append("\n\n");
    reportMessage(message.c_str(), ChannelErrorLog);
}

void reportCompileFailure(std::string_view name, const Stage& stage, GLuint shader,
                          const NarrowString& text) {
    NarrowString what(" ");
    what.append(stage.word).append(" shader failed to compile\n");
    reportFailure(name, what);
    InfoLog log{};
    glGetShaderInfoLog(shader, infoLogLimit, nullptr, log.data());
    std::fputs(stage.banner, stdout);
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputs("****************************\n", stdout);
    std::fputs(log.data(), stdout);
    reportLog(name, stage.tag, log.data());
}

void addStage(GLuint program, std::string_view name, const Stage& stage, const NarrowString& text) {
    const GlShader shader = GlShader::create(stage.type);
    const GLchar* source = text.c_str();
    glShaderSource(shader.get(), 1, &source, nullptr);
    glCompileShader(shader.get());
    GLint isCompiled = GL_FALSE;
    glGetShaderiv(shader.get(), GL_COMPILE_STATUS, &isCompiled);
    if (isCompiled == GL_TRUE)
        glAttachShader(program, shader.get());
    else
        reportCompileFailure(name, stage, shader.get(), text);
}

void reportLinkFailure(std::string_view name, std::string_view log) {
    reportFailure(name, " program failed to link\n");
    reportLog(name, linkTag, log);
}

// Returns false and reports an error for a program with too many varyings, with which some drivers
// crash.
bool checkVaryings(std::string_view name, const NarrowString& fragmentText) {
    const std::int64_t needed = countVaryingComponents(fragmentText);
    GLint limit = 0;
    glGetIntegerv(GL_MAX_VARYING_FLOATS, &limit); // GL_MAX_VARYING_COMPONENTS by its older name
    if (needed <= limit)
        return true;
    reportLinkFailure(name, "The dependents need " + std::to_string(needed) +
                                " varying components, OpenGL has " + std::to_string(limit) + ".");
    return false;
}

void link(GLuint program, std::string_view name) {
    glLinkProgram(program);
    GLint isLinked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &isLinked);
    if (isLinked == GL_TRUE)
        return;
    InfoLog log{};
    glGetProgramInfoLog(program, infoLogLimit, nullptr, log.data());
    reportLinkFailure(name, log.data());
}

} // namespace

GlProgram buildProgram(std::string_view name, const NarrowString& vertexText,
                       const NarrowString& fragmentText) {
    GlProgram program = GlProgram::create();
    addStage(program.get(), name, vertexStage, vertexText);
    addStage(program.get(), name, fragmentStage, fragmentText);
    if (checkVaryings(name, fragmentText))
        link(program.get(), name);
    return program;
}
