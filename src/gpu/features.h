// What the engine needs of an OpenGL context. A missing entry point is a null pointer that must not
// be called, so this is checked before a graph is built.
#pragma once

// The name of the first thing that is missing: "an OpenGL context", an entry point or an
// extension; null if everything is there. Needs the device's context current and glewInit run.
const char* missingFeature();
