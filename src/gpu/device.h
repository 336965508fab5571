// The OpenGL context in which the effect works, on a hidden window of its own, and the way into it
// and back out. The caller keeps the three handles; there is one device in a module.
// Nothing here ends in an error: without a context the handles stay null, every switch then leaves
// nothing current, and OpenGL ignores what is called.
#pragma once

#include "platform/wgl.h"

struct Device {
    HWND glWindow = nullptr;
    HDC glDeviceContext = nullptr;
    HGLRC glRenderContext = nullptr;
};

// Keeps at most 63 bytes of the name. Only a name of up to 45 bytes can be made into a device.
void setDeviceName(const char* name);

// Writes nothing if the name is too long or the window class is refused; what could not be had
// after that is null. Once there is a window, nothing is current, whatever was before.
void createDevice(HWND& window, HDC& deviceContext, HGLRC& renderContext);

// The window stays: it goes with the module. Handles that are null or already gone do no harm.
void destroyDevice(HWND window, HDC deviceContext, HGLRC renderContext);

// A device that lives as long as the object: for whoever needs the process' one device to end with
// something else. The name is that of setDeviceName; nothing is current behind the constructor.
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

// Makes the device's context current for a stretch of code and then gives back what was current,
// whether this process' WGL made it or not. Nests.
class ContextSwitch {
public:
    explicit ContextSwitch(const Device& device);
    ~ContextSwitch() { restore(); }
    ContextSwitch(const ContextSwitch&) = delete;
    ContextSwitch& operator=(const ContextSwitch&) = delete;

    // Ends the stretch early; from the second call on nothing happens.
    void restore();

private:
    HDC previousDC;
    HGLRC previousContext;
    bool isOpen = true;
};

// For a developer, on the debug output; each needs a current context to have something to tell.
void reportVersion();
// Takes one error off OpenGL's list and gives its code; 0: there was none.
unsigned int reportError();
unsigned int reportErrorAfter(const char* text);
