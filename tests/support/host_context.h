// OpenGL as used by the host process itself, through EGL or through WGL on its own window: queries
// the thread's current context, and creates contexts.
#pragma once

#include <array>
#include <vector>

// The current context, display and surfaces as the system returns them; all null: none.
using CurrentContext = std::array<void*, 4>;
CurrentContext currentContext();

// How a host may create its context.
struct HostKind {
    unsigned api;     // EGL API
    bool hasSurfaces; // whether it has draw and read surfaces
};
std::vector<HostKind> hostKinds(); // the last is the most common

// A context that is current from construction; the destructor makes none current.
class HostContext {
public:
    explicit HostContext(const HostKind& kind);
    ~HostContext();
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    void makeCurrent() const;
    void release() const; // makes no context current
    bool isApiBound() const;

    CurrentContext all{};

private:
    HostKind kind_;
    void* display_ = nullptr; // the EGL display or the window
};
