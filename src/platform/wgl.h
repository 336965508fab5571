// WGL and its device contexts, implemented with EGL: OpenGL without a screen.
//
// An HGLRC is an EGLContext. An HDC is a display with a draw and a read surface; it is never freed,
// so an old one may still be used. Both can also represent a context that other code made current
// through EGL; wglMakeCurrent can restore it. The display is shared with the rest of the process
// and never terminated here. A call with an invalid or null handle fails. One thread only.
#pragma once

#include "platform/win32.h"

using HDC = struct HDC__*;
using HGLRC = struct HGLRC__*;

struct PIXELFORMATDESCRIPTOR {
    WORD nSize; // bytes of this record
    WORD nVersion;
    DWORD dwFlags;
    BYTE iPixelType;
    BYTE cColorBits;
    BYTE cRedBits;
    BYTE cRedShift;
    BYTE cGreenBits;
    BYTE cGreenShift;
    BYTE cBlueBits;
    BYTE cBlueShift;
    BYTE cAlphaBits;
    BYTE cAlphaShift;
    BYTE cAccumBits;
    BYTE cAccumRedBits;
    BYTE cAccumGreenBits;
    BYTE cAccumBlueBits;
    BYTE cAccumAlphaBits;
    BYTE cDepthBits;
    BYTE cStencilBits;
    BYTE cAuxBuffers;
    BYTE iLayerType;
    BYTE bReserved;
    DWORD dwLayerMask;
    DWORD dwVisibleMask;
    DWORD dwDamageMask;
};
static_assert(sizeof(PIXELFORMATDESCRIPTOR) == 40);

inline constexpr DWORD PFD_DOUBLEBUFFER = 0x01;
inline constexpr DWORD PFD_DRAW_TO_WINDOW = 0x04;
inline constexpr DWORD PFD_SUPPORT_OPENGL = 0x20;
inline constexpr BYTE PFD_TYPE_RGBA = 0;

// Null without such a window or without a display. ReleaseDC removes the pixel format and gives 1
// for success, else 0.
HDC GetDC(HWND window);
int ReleaseDC(HWND window, HDC deviceContext);

// Returns the number of a format with at least the requested colour and depth bits; 0: there is
// none.
int ChoosePixelFormat(HDC deviceContext, const PIXELFORMATDESCRIPTOR* wanted);
BOOL SetPixelFormat(HDC deviceContext, int format, const PIXELFORMATDESCRIPTOR* wanted);

// The context has the compatibility profile, in the highest version that the driver has. Null
// without a device context whose pixel format is set.
HGLRC wglCreateContext(HDC deviceContext);
// Deletes only contexts of wglCreateContext; a context that is current here is released first.
BOOL wglDeleteContext(HGLRC context);

// Two nulls make no context current. A failure does so, too.
BOOL wglMakeCurrent(HDC deviceContext, HGLRC context);
// Null if no context is current on this thread.
HDC wglGetCurrentDC();
HGLRC wglGetCurrentContext();
