// The OpenGL features that the engine needs. A missing entry point is a null pointer that must not
// be called, so this is checked before a graph is built.
#pragma once

// The name of the first missing feature: "an OpenGL context", an entry point or an extension; null
// if all are available. Needs the device's context current and glewInit called.
const char* missingFeature();
