#include "pbhost/check/program_compiler.h"

#include <GL/glew.h>

#include <cstdint>
#include <string>

#include "engine/program/varying_count.h"
#include "gpu/features.h"
#include "gpu/gl_names.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

template<auto& getNumber, auto& getLog>
std::string logOf(GLuint name) {
    GLint length = 0;
    getNumber(name, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(length > 0 ? length : 0), '\0');
    if (length > 0)
        getLog(name, length, nullptr, log.data());
    return log.substr(0, log.find('\0'));
}

class Steps {
public:
    explicit Steps(const MappedProgram& program)
        : mapped_(program), program_(GlProgram::create()) {}

    std::vector<CompileFailure> run() {
        const bool isVertexCompiled = compile(GL_VERTEX_SHADER, 'v', mapped_.vertex);
        const bool isFragmentCompiled = compile(GL_FRAGMENT_SHADER, 'f', mapped_.fragment);
        if (isVertexCompiled && isFragmentCompiled && hasVaryings())
            link();
        return std::move(logs_);
    }

private:
    void keep(char stage, std::string log) {
        if (!log.empty())
            logs_.push_back({mapped_.name, stage, std::move(log)});
    }

    bool compile(GLenum type, char stage, const NarrowString& text) {
        const GlShader shader = GlShader::create(type);
        const GLchar* source = text.c_str();
        glShaderSource(shader.get(), 1, &source, nullptr);
        glCompileShader(shader.get());
        GLint isCompiled = GL_FALSE;
        glGetShaderiv(shader.get(), GL_COMPILE_STATUS, &isCompiled);
        std::string log = logOf<glGetShaderiv, glGetShaderInfoLog>(shader.get());
        if (isCompiled != GL_TRUE && log.empty())
            log = "error: the driver does not compile the shader and gives no reason";
        keep(stage, std::move(log));
        glAttachShader(program_.get(), shader.get());
        return isCompiled == GL_TRUE;
    }

    bool hasVaryings() {
        const std::int64_t needed = countVaryingComponents(mapped_.fragment);
        GLint limit = 0;
        glGetIntegerv(GL_MAX_VARYING_FLOATS, &limit);
        if (needed > limit)
            keep('l', "error: the dependents need " + std::to_string(needed) +
                          " varying components, OpenGL has " + std::to_string(limit));
        return needed <= limit;
    }

    void link() {
        glLinkProgram(program_.get());
        GLint isLinked = GL_FALSE;
        glGetProgramiv(program_.get(), GL_LINK_STATUS, &isLinked);
        std::string log = logOf<glGetProgramiv, glGetProgramInfoLog>(program_.get());
        if (isLinked != GL_TRUE && log.empty())
            log = "error: the driver does not link the program and gives no reason";
        keep('l', std::move(log));
    }

    const MappedProgram& mapped_;
    GlProgram program_;
    std::vector<CompileFailure> logs_;
};

} // namespace

ProgramCompiler::ProgramCompiler() : device_("pbhost check") {
    const ContextSwitch current(device_);
    glewExperimental = GL_TRUE;
    glewInit(); // its result is not used: it fails without a screen, after it has loaded everything
    if (const char* missing = missingFeature())
        throw Failure(ExitCode::RenderFailed,
                      "OpenGL can not be used, it lacks: " + std::string(missing) +
                          " (a software driver for EGL is enough)");
}

std::vector<CompileFailure> ProgramCompiler::compile(const MappedProgram& program) const {
    const ContextSwitch current(device_);
    return Steps(program).run();
}

} // namespace pbhost
