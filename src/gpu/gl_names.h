// Owners of OpenGL names. Each name has exactly one owner, which deletes it in its destructor; 0 is
// no name and is not deleted. Creation and destruction need the name's context current.
#pragma once

#include <utility>

// `Kind` has `generate`, which returns a new name, and `destroy`, which takes one that is not 0.
template<class Kind>
class GlName {
public:
    GlName() = default;
    template<class... Arguments>
    static GlName create(Arguments... arguments) {
        return GlName(Kind::generate(arguments...));
    }
    GlName(GlName&& other) noexcept : name(std::exchange(other.name, 0)) {}
    GlName& operator=(GlName&& other) noexcept {
        GlName taken(std::move(other));
        std::swap(name, taken.name);
        return *this;
    }
    ~GlName() {
        if (name != 0)
            Kind::destroy(name);
    }

    unsigned int get() const { return name; }

private:
    explicit GlName(unsigned int newName) : name(newName) {}

    unsigned int name = 0;
};

struct TextureKind {
    static unsigned int generate();
    static void destroy(unsigned int name);
};
struct FramebufferKind {
    static unsigned int generate();
    static void destroy(unsigned int name);
};
struct ProgramKind {
    static unsigned int generate();
    static void destroy(unsigned int name);
};
// A shader that is attached to a program may be deleted: it exists as long as the program needs it.
struct ShaderKind {
    static unsigned int generate(unsigned int stage); // GL_VERTEX_SHADER or GL_FRAGMENT_SHADER
    static void destroy(unsigned int name);
};

using GlTexture = GlName<TextureKind>;
using GlFramebuffer = GlName<FramebufferKind>;
using GlProgram = GlName<ProgramKind>;
using GlShader = GlName<ShaderKind>;
