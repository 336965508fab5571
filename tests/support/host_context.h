// A host that uses OpenGL on its own, as the process around the module does: through EGL, or
// through WGL on a window of its own. What is current on its thread, and a context to have current.
#pragma once

#include <array>
#include <vector>

// What makes a context current, as the system itself says. All null: nothing is.
using CurrentContext = std::array<void*, 4>;
CurrentContext currentContext();

// The ways in which a host may have its context.
struct HostKind {
    unsigned api;     // as the system names it
    bool hasSurfaces; // to draw to and to read from
};
std::vector<HostKind> hostKinds(); // the last is the commonest

// Current from the start; nothing is current behind it.
class HostContext {
public:
    explicit HostContext(const HostKind& kind);
    ~HostContext();
    HostContext(const HostContext&) = delete;
    HostContext& operator=(const HostContext&) = delete;

    void makeCurrent() const;
    void release() const; // nothing is current behind it
    bool isApiBound() const;

    CurrentContext all{};

private:
    HostKind kind_;
    void* place_ = nullptr; // the display, or the window
};
