// The effect's OpenGL context on a hidden window, and making it current for a limited time. The
// caller stores the three handles; a module has one device.
//
// Nothing here reports an error: without a context the handles are null, a ContextSwitch then makes
// no context current, and OpenGL ignores all calls.
#pragma once

#include "platform/wgl.h"

struct Device {
    HWND glWindow = nullptr;
    HDC glDeviceContext = nullptr;
    HGLRC glRenderContext = nullptr;
};

// Sets the name of the window and its class; cut at 63 bytes. createDevice requires at most 45.
void setDeviceName(const char* name);

// Writes nothing if the name is too long or the window class cannot be registered; otherwise,
// handles that cannot be created are null. After a window was created, no context is current.
void createDevice(HWND& window, HDC& deviceContext, HGLRC& renderContext);

// The window is kept until the module is unloaded. Handles that are null or destroyed are ignored.
void destroyDevice(HWND window, HDC deviceContext, HGLRC renderContext);

// Owns a device. The name is that of setDeviceName; after the constructor no context is current.
class OwnDevice : public Device {
public:
    explicit OwnDevice(const char* name) {
        setDeviceName(name);
        createDevice(glWindow, glDeviceContext, glRenderContext);
    }
    ~OwnDevice() { destroyDevice(glWindow, glDeviceContext, glRenderContext); }
    OwnDevice(const OwnDevice&) = delete;
    OwnDevice& operator=(const OwnDevice&) = delete;
};

// Makes the device's context current and later restores the previous one, whether it was made
// through WGL or not. Switches can be nested.
class ContextSwitch {
public:
    explicit ContextSwitch(const Device& device);
    ~ContextSwitch() { restore(); }
    ContextSwitch(const ContextSwitch&) = delete;
    ContextSwitch& operator=(const ContextSwitch&) = delete;

    // Restores the previous context before the destructor does; a second call does nothing.
    void restore();

private:
    HDC previousDC;
    HGLRC previousContext;
    bool isOpen = true;
};

// Write to the debug output; each needs a current context.
void reportVersion();
// Removes one error from OpenGL's list and returns its code; 0: there was none.
unsigned int reportError();
unsigned int reportErrorAfter(const char* text);
